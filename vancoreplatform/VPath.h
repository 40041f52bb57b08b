// File-system paths, also those of other machines.
#pragma once

#include "vancoreplatform/Export.h"
#include "vancoreplatform/VString.h"

// A path kept as the text it was given.
//
// Documents carry the paths of other machines, so its rules are the same on every
// system: both "/" and "\" separate, and a drive ("C:"), a drive with a separator
// ("C:\"), a leading separator and a UNC root ("\\server\share") are roots.
// Nothing here touches the file system.
class VANCOREPLATFORM_API VPath {
public:
    VPath() = default;
    VPath(const VString& text) : m_text(text) {}
    VPath(const char* utf8) : m_text(utf8) {}

    const VString& String() const noexcept { return m_text; }
    // The text with "/" for every separator.
    VString GenericString() const;
    bool IsEmpty() const noexcept { return m_text.IsEmpty(); }
    // Begins with a root: a separator, a drive, a UNC server.
    bool IsAbsolute() const;

    // Drops the last element, with the separators before and behind it; a root stays.
    // Nothing is left of a bare name. Equal paths stay equal.
    void RemoveFilename();

    // `right` below `left`, with one separator between; an absolute `right`
    // replaces `left`, an empty one leaves it.
    friend VANCOREPLATFORM_API VPath operator/(const VPath& left, const VPath& right);

    // Root first, then element by element, by code units: the kind and number of
    // separators do not count behind the root, nor any at the end; letter case does.
    // Dots are elements like others.
    friend VANCOREPLATFORM_API bool operator==(const VPath& a, const VPath& b);
    friend VANCOREPLATFORM_API bool operator<(const VPath& a, const VPath& b);
    friend bool operator!=(const VPath& a, const VPath& b) { return !(a == b); }

private:
    VString m_text;
};
