// The values of keys and ids.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include <xercesc/validators/datatype/DatatypeValidator.hpp>

#include "vancoreplatform/VString.h"
#include "vancorexml/main/parser/ParseDiagnostic.h"
#include "vancorexml/main/parser/SourcePosition.h"
#include "vansys/TextHash.h"

// A value is the canonical text of an id or of the fields of a key. The texts of several fields are joined with a NUL,
// which no document contains.
namespace KeyValues {

// Returns the value as messages quote it: "A1", or "A1, 2".
VString Display(std::u16string_view value);
// Replaces each run of white space by a blank and removes it at both ends.
std::u16string CollapseWhiteSpace(std::u16string_view text);
// Returns the text as its type normalises it. `type` may be null.
std::u16string Normalise(std::u16string_view text, const xercesc::DatatypeValidator* type);
// Returns the same text for two normalised texts that are equal numbers or Boolean values of their type.
std::u16string Canonicalise(const std::u16string& text, const xercesc::DatatypeValidator* type);
// Appends the canonical text of a further field.
void AppendField(std::u16string& value, bool isFirst, std::u16string_view canonical);

}  // namespace KeyValues

// Values and the places where they stand first.
//
// Ownership: a value. Threads: one at a time.
class KeyTable {
public:
    // The number of values that faults list as allowed.
    static constexpr std::size_t AllowedLimit = 100;

    std::size_t GetSize() const noexcept { return m_starts.size(); }
    bool Contains(const std::u16string& value) const { return m_starts.count(value) != 0; }
    // Returns the first values, up to AllowedLimit, for display.
    const std::vector<VString>& GetFirstValues() const noexcept { return m_firstValues; }
    // Returns all values for display, in no particular order. Linear.
    std::vector<VString> GetAllValues() const;

    // Returns the place where the value stands already, if it does.
    std::optional<SourcePosition> Add(const std::u16string& value, SourcePosition start);
    // Moves the values of `other` here. Linear in the smaller table.
    void Merge(KeyTable&& other);

private:
    std::unordered_map<std::u16string, SourcePosition, TextHash> m_starts;
    std::vector<VString> m_firstValues;
};

// References to keys or ids, in the order in which each value stands first.
//
// Ownership: a value. Threads: one at a time.
class KeyReferences {
public:
    struct Reference {
        const std::u16string* value = nullptr;
        ParseDiagnostic diagnostic;  // of its first place
        std::uint64_t others = 0;    // the number of further places
    };

    std::vector<Reference>& Get() noexcept { return m_references; }
    // Calls `describe` for the diagnostic if the value is new.
    template <typename Describe>
    void Add(const std::u16string& value, Describe describe)
    {
        const auto [entry, isNew] = m_indexes.try_emplace(value, m_references.size());
        if (isNew)
            m_references.push_back({&entry->first, describe(), 0});
        else
            ++m_references[entry->second].others;
    }

private:
    std::unordered_map<std::u16string, std::size_t, TextHash> m_indexes;
    std::vector<Reference> m_references;
};
