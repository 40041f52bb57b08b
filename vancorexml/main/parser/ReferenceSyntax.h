// References in a document that may not be well-formed.
#pragma once

#include <cstddef>
#include <map>
#include <string_view>

#include "vancorexml/main/parser/SyntaxText.h"

// A general entity that a document declares.
struct DeclaredEntity {
    TextRange name;
    TextRange text;  // empty for an entity whose text stands in another file
    // The name of an entity in the text of this one if that leads to an entity that contains itself; otherwise empty.
    std::string_view recursion;
};

// The general entities that a document declares.
struct DeclaredEntities {
    // By name, in the text of the document. The order makes messages about circles the same in every run.
    std::map<std::string_view, DeclaredEntity> declarations;
    // True if other declarations, which the library does not read here, may declare more entities: an external subset
    // or parameter entities.
    bool mayBeIncomplete = false;
};

// Sets DeclaredEntity::recursion. Looks only at references that are written in the texts of entities as such. Linear in
// these texts.
void FindRecursion(const SyntaxText& text, DeclaredEntities& entities);

// Scans the reference whose "&" is at `at`. The texts of entities are not checked: in a well-formed document each of
// them is well-formed by itself, so the rest of the document can be judged without them.
//
// A reference to an entity that contains itself is a fault at the declaration of that entity.
std::size_t ScanReference(SyntaxText& text, const DeclaredEntities& entities, std::size_t at);
