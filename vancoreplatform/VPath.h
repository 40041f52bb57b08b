// File-system paths of any system.
#pragma once

#include "vancoreplatform/Export.h"
#include "vancoreplatform/VString.h"

// A file-system path. It stores its text unchanged and never accesses the file system.
//
// Documents contain paths of other machines, so the rules are the same on every system:
//  - Both "/" and "\" are separators.
//  - A root is a drive ("C:"), a drive with a separator ("C:\"), a leading separator or a UNC share
//    ("\\server\share").
class VANCOREPLATFORM_API VPath {
public:
    VPath() = default;
    VPath(const VString& text) : m_text(text) {}
    VPath(const char* utf8) : m_text(utf8) {}

    const VString& String() const noexcept { return m_text; }
    // Returns the text with "/" in place of every "\".
    VString GenericString() const;
    bool IsEmpty() const noexcept { return m_text.IsEmpty(); }
    // True if the path begins with a root.
    bool IsAbsolute() const;

    // Removes the last element and the separators around it. A root stays. A bare name becomes the empty path.
    // Equal paths stay equal.
    void RemoveFilename();

    // Joins `left` and `right` with one separator. Returns `right` if `right` is absolute or `left` is empty, and
    // `left` if `right` is empty.
    friend VANCOREPLATFORM_API VPath operator/(const VPath& left, const VPath& right);

    // Compares the roots, then the elements one by one, by code units and case-sensitively. Ignores the kind of
    // the separators, their number between elements, and separators at the end. "." and ".." are ordinary
    // elements.
    friend VANCOREPLATFORM_API bool operator==(const VPath& a, const VPath& b);
    friend VANCOREPLATFORM_API bool operator<(const VPath& a, const VPath& b);
    friend bool operator!=(const VPath& a, const VPath& b) { return !(a == b); }

private:
    VString m_text;
};
