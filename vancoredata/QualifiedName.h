// Names with a root.
#pragma once

#include "vancoredata/Export.h"
#include "vancoreplatform/VString.h"

// A name of two parts: a root (the data source) and a local part. A value.
//
// The written form is "[root].[local]", or "[local]" without a root. A "]" inside a part is doubled. Parsing the
// written form of any name gives the same name.
class VANCOREDATA_API QualifiedName {
public:
    QualifiedName() = default;
    QualifiedName(const VString& root, const VString& local) : m_root(root), m_local(local) {}

    // Parses the written form. Any other text, such as one without brackets, becomes the local part unchanged.
    static QualifiedName Parse(const VString& text);

    const VString& GetRootValue() const noexcept { return m_root; }
    void SetRootValue(const VString& root) { m_root = root; }
    const VString& GetLocalValue() const noexcept { return m_local; }
    // Returns the written form, or an empty text for the empty name.
    VString GetFullValue() const;
    // True if both parts are empty.
    bool IsEmpty() const noexcept { return m_root.IsEmpty() && m_local.IsEmpty(); }

    friend bool operator==(const QualifiedName& a, const QualifiedName& b) noexcept
    {
        return a.m_root == b.m_root && a.m_local == b.m_local;
    }
    friend bool operator!=(const QualifiedName& a, const QualifiedName& b) noexcept { return !(a == b); }
    // Orders by root, then by local part.
    friend bool operator<(const QualifiedName& a, const QualifiedName& b) noexcept
    {
        return a.m_root != b.m_root ? a.m_root < b.m_root : a.m_local < b.m_local;
    }

private:
    VString m_root;
    VString m_local;
};
