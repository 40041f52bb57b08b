// A scope guard for input sources.
#pragma once

#include "vancorexml/main/parser/InputSource.h"
#include "vancorexml/main/parser/XMLExport.h"

// Resets the source to its start at the end of the scope. The source must outlive this object. A failed
// reset is logged; the source keeps its position and its next read reports the error.
class VANCOREXML_API InputSourceResetter {
public:
    explicit InputSourceResetter(::InputSource& source) noexcept : m_source(source) {}
    ~InputSourceResetter();
    InputSourceResetter(const InputSourceResetter&) = delete;
    InputSourceResetter& operator=(const InputSourceResetter&) = delete;

private:
    ::InputSource& m_source;
};
