// The paths with which schemas select keys.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include <xercesc/validators/schema/identity/XercesXPath.hpp>

#include "vancoreplatform/VString.h"

// The path of a selector or a field, such as ".//item/@id | name", for matching elements as they are read.
//
// A branch of the path is matched level by level. Its state says how many of its steps the elements from the start of
// the path down to an element match. There may be several such numbers, so the state has one bit for each.
//
// Ownership: a value. Thread-safe, because it never changes.
class KeyPath {
public:
    struct NameTest {
        bool allowsAnyNamespace = false;
        bool allowsAnyName = false;
        unsigned int uri = 0;
        std::u16string name;

        bool Matches(unsigned int otherUri, const XMLCh* otherName) const;
    };
    using State = std::uint64_t;
    struct Branch {
        bool beginsAnywhere = false;  // at any element below the start, as with ".//"
        std::vector<NameTest> steps;  // of child elements
        std::optional<NameTest> attribute;

        // The state at the element at which the path starts.
        static constexpr State Start = 1;
        // Returns the state at a child of an element with this state.
        State Step(State state, unsigned int uri, const XMLCh* name) const;
        // True if the path selects the element, or one of its attributes.
        bool IsMatch(State state) const noexcept { return (state >> steps.size() & 1) != 0; }
    };

    // Omits branches of more than 63 steps.
    explicit KeyPath(xercesc::XercesXPath& path);

    const std::vector<Branch>& GetBranches() const noexcept { return m_branches; }
    // Returns a phrase such as "the attribute 'id'", "the element 'name'" or "a value at 'name | @id'".
    const VString& GetWords() const noexcept { return m_words; }
    // Returns the name if the path is that of an attribute of the element at which it starts; otherwise an empty text.
    const VString& GetAttributeName() const noexcept { return m_attributeName; }

private:
    void Describe(const XMLCh* expression);

    std::vector<Branch> m_branches;
    VString m_attributeName;
    VString m_words;
};
