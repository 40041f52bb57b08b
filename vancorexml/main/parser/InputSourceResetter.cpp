#include "vancorexml/main/parser/InputSourceResetter.h"

#include "vancoreplatform/VFormatString.h"
#include "vancoreplatform/VLog.h"

InputSourceResetter::~InputSourceResetter()
{
    try {
        m_source.ResetToStart();
    } catch (...) {
        LogMessage(VLog::Warn,
            VFormatString("InputSourceResetter: \"%1\" could not be reset to its start").arg(m_source.Id()));
    }
}
