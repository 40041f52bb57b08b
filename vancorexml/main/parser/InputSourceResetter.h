// Handing a source back at its start.
#pragma once

#include "vancorexml/main/parser/InputSource.h"

// Resets the source, which must outlive it, when it dies.
class InputSourceResetter {
public:
    explicit InputSourceResetter(InputSource& source) noexcept : m_source(source) {}
    ~InputSourceResetter() { m_source.ResetToStart(); }
    InputSourceResetter(const InputSourceResetter&) = delete;
    InputSourceResetter& operator=(const InputSourceResetter&) = delete;

private:
    InputSource& m_source;
};
