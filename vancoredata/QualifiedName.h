// Names with a root.
#pragma once

#include "vancoredata/Export.h"
#include "vancoreplatform/VString.h"

// A name of two parts: a root (the data source) and a local part. A value.
//
// Written "[root].[local]", or "[local]" when there is no root; a "]" inside a part is
// doubled. Parsing what GetFullValue wrote gives the name back, for any text.
class VANCOREDATA_API QualifiedName {
public:
    QualifiedName() = default;
    QualifiedName(const VString& root, const VString& local) : m_root(root), m_local(local) {}

    // Reads the written form. A text without brackets is one local part as it stands,
    // and so is any text that is not wholly of the written form.
    static QualifiedName Parse(const VString& text);

    const VString& GetRootValue() const noexcept { return m_root; }
    void SetRootValue(const VString& root) { m_root = root; }
    const VString& GetLocalValue() const noexcept { return m_local; }
    // The written form; the empty name gives the empty text.
    VString GetFullValue() const;
    // Neither a root nor a local part.
    bool IsEmpty() const noexcept { return m_root.IsEmpty() && m_local.IsEmpty(); }

    friend bool operator==(const QualifiedName& a, const QualifiedName& b) noexcept
    {
        return a.m_root == b.m_root && a.m_local == b.m_local;
    }
    friend bool operator!=(const QualifiedName& a, const QualifiedName& b) noexcept { return !(a == b); }
    // By root, then by local part.
    friend bool operator<(const QualifiedName& a, const QualifiedName& b) noexcept
    {
        return a.m_root != b.m_root ? a.m_root < b.m_root : a.m_local < b.m_local;
    }

private:
    VString m_root;
    VString m_local;
};
