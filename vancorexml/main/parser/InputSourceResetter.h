// Handing a source back at its start.
#pragma once

#include "vancorexml/main/parser/InputSource.h"
#include "vancorexml/main/parser/XMLExport.h"

// Resets the source, which must outlive it, when it dies. A reset that fails is logged: the
// source then stands where it was, and its next read tells.
class VANCOREXML_API InputSourceResetter {
public:
    explicit InputSourceResetter(InputSource& source) noexcept : m_source(source) {}
    ~InputSourceResetter();
    InputSourceResetter(const InputSourceResetter&) = delete;
    InputSourceResetter& operator=(const InputSourceResetter&) = delete;

private:
    InputSource& m_source;
};
