// The limits of what entities and default attributes may add to a document.
#pragma once

#include <cstdint>
#include <optional>

#include <xercesc/sax/InputSource.hpp>
#include <xercesc/util/SecurityManager.hpp>

#include "vancoreplatform/VString.h"

// How much a document may expand. A document exactly at a limit is allowed.
struct ExpansionLimits {
    // References to general entities in the content. The same limit applies separately to all references
    // to entities in the document type declaration.
    std::uint64_t expansions = xercesc::SecurityManager::ENTITY_EXPANSION_LIMIT;  // 50,000
    // UTF-16 code units that replace the references.
    std::uint64_t text = 100000000;
    // The part of `text` that comes from entities with tags or declarations. Such text costs far more memory than
    // other text: 79 KB with an entity of "<a/>" tags became 25,000,000 elements in 3.3 GB, and 17 KB with repeated
    // declarations became 340,000 warnings in 600 MB.
    std::uint64_t markup = 1000000;
    // UTF-16 code units that a parser reads while it replaces the references: `text`, and in addition each
    // reference such as "&name;" in the text of an entity. The parser reads such a reference before it
    // replaces it. In ordinary documents such references are short. The limit is for documents that are made to
    // keep a parser busy: 950,000,000 code units took 9 seconds.
    std::uint64_t read = 200000000;
    // UTF-16 code units of entity names that Xerces compares. To find entities that contain themselves, Xerces
    // compares the name of each entity that it expands with the names of all entities in which it is nested. The
    // guard counts the whole name for each comparison, although Xerces may stop at the first difference.
    // 8,700,000,000 code units took 9 seconds. 50,000 references within 1,000 levels cannot exceed the limit if the
    // names have up to 40 characters.
    std::uint64_t compared = 2000000000;
    // Levels of entities within each other. Xerces keeps a reader with buffers of 32 KB for each open entity: 45,000
    // levels took 800 MB. The same limit applies separately to general and to parameter entities.
    std::uint64_t levels = 1000;
    // Attributes that a document type declaration adds. A tree stores an attribute with a shared name and a
    // shared value in 24 to 50 bytes. The parse stops only at the limit, so a tree with that many attributes must
    // not take more than 200 MB.
    std::uint64_t defaults = 3000000;
    // UTF-16 code units of the values of these attributes. The same limit applies separately to their names.
    std::uint64_t defaultText = 80000000;
};

// A limit that a document exceeds.
struct ExpansionExcess {
    VString message;
    // Count from 1; 0 if unknown.
    XMLFileLoc line = 0;
    XMLFileLoc column = 0;
};

// Counts the attributes that a document type declaration adds to the elements of a document.
//
// Threads: one at a time.
class DefaultAttributeCounter {
public:
    explicit DefaultAttributeCounter(const ExpansionLimits& limits = {}) noexcept : m_limits(limits) {}

    // Counts one attribute; lengths in UTF-16 code units. Returns a message if a limit is exceeded.
    std::optional<VString> Add(std::uint64_t nameLength, std::uint64_t valueLength);

private:
    ExpansionLimits m_limits;
    std::uint64_t m_count = 0;
    std::uint64_t m_names = 0;
    std::uint64_t m_values = 0;
};

// Finds entity bombs before a parser expands them. Xerces itself limits only the number of references to
// general entities in the content. It limits neither their text nor any expansion in the document type
// declaration.
//
// The guard rehearses the parse. A second reader reads the document and changes the value of each entity
// when Xerces reports the declaration. A general entity gets a short mark as its value, so nothing
// grows. The marks in texts, attributes and default values show where each entity is used, and
// EntitySizes computes how large the expansion of that entity is. A parameter entity keeps its text,
// which may declare more entities, and gets a processing instruction in front of it. Xerces reports the
// instruction at each expansion, before it reads the text.
//
// Before its first check in the process, the guard reads a sample document to find out whether Xerces
// reports all of this. If it does not, the guard cannot measure entities. It then reports every document
// and schema that it checks as exceeding a limit.
//
// Thread-safe.
//
// Cost: linear in the document and in the expansion of its parameter entities. Before the guard reads the
// content of a document, it computes the worst case: the content refers to the longest entity as often as
// Xerces allows. If even the worst case is within the limits, the guard does not read the content.
class EntityExpansionGuard {
public:
    explicit EntityExpansionGuard(const ExpansionLimits& limits = {}) noexcept : m_limits(limits) {}

    // Returns the first limit that the entities of a document exceed, if any. Stops at a fatal fault in the
    // document and ignores the rest, because the parse of the document will end at the same fault. The
    // caller must parse the document with a SecurityManager that allows `expansions` references, and must
    // pass its default attributes to a DefaultAttributeCounter.
    std::optional<ExpansionExcess> CheckDocument(const xercesc::InputSource& source) const;
    // Like CheckDocument, for a schema. Also checks the number of references in the content and the
    // default attributes.
    std::optional<ExpansionExcess> CheckSchema(const xercesc::InputSource& source) const;

private:
    ExpansionLimits m_limits;
};
