// The compiled schemas that no parser uses.
#pragma once

#include <cstddef>
#include <memory>
#include <string>
#include <vector>

#include <xercesc/framework/XMLGrammarPoolImpl.hpp>
#include <xercesc/parsers/SAX2XMLReaderImpl.hpp>
#include <xercesc/util/BinInputStream.hpp>

#include "vancoreplatform/VString.h"
#include "vancorexml/main/parser/XercesInputSource.h"
#include "vancorexml/main/parser/XercesMemory.h"
#include "vancorexml/main/parser/XercesPlatform.h"

class DocumentReader;

// A schema as Xerces reads it.
struct SchemaText {
    SchemaText(VString schemaId, const XercesInputSource& source);

    // True if a parser would make the same of `source`: same id, same bytes and same way to find the encoding.
    bool IsEqual(const VString& otherId, const XercesInputSource& source) const;

    VString id;
    std::string bytes;
    std::u16string encoding;  // empty if Xerces detects it
};

// Schemas that Xerces has compiled, in one pool of grammars. They share their memory with the reader that loads them,
// because a schema refers to parts that its reader made.
//
// Ownership: owns everything. Keeps Xerces initialised.
//
// Threads: one at a time. Parsers never share compiled schemas, although Xerces calls a locked pool of grammars
// thread-safe: the pattern of a type completes each character class when a value first reaches it, without a lock, and
// allocates the class from the memory of the schemas.
struct CompiledSchemas {
    CompiledSchemas();
    ~CompiledSchemas();
    CompiledSchemas(const CompiledSchemas&) = delete;
    CompiledSchemas& operator=(const CompiledSchemas&) = delete;

    // Returns the size in bytes of the memory that Xerces has allocated, and of the texts.
    std::size_t Size() const;

    XercesInitializer xerces;  // first, so that it is destroyed last
    // New blocks are zero: if an allocation for a content model fails, Xerces frees pointers that it has not set.
    XercesMemory memory{XercesMemory::Content::Zero};
    xercesc::XMLGrammarPoolImpl grammars{&memory};
    std::unique_ptr<xercesc::BinInputStream> stream;  // of the schema that was loaded last
    // Null after the abandoned loading of a schema, which leaves the reader unfit for reuse, and in the cache.
    std::unique_ptr<xercesc::SAX2XMLReaderImpl> loader;
    std::vector<SchemaText> texts;  // in the order in which they were loaded
    // True if no message and no exception arose from the schemas, and no exception from a document.
    bool isClean = true;
    // In the cache, a reader of documents that is ready for its next document, or null. It refers to its last parser,
    // which must be replaced before the next use.
    std::unique_ptr<DocumentReader> reader;
};

// Keeps compiled schemas for the next parser that loads the same ones, because compiling takes twenty times as long as
// validating a small document. Each parser has its compiled schemas for itself and puts them back at its end. So the
// cache holds as many copies of a schema as were in use at the same time, within its limits.
//
// Ownership: owns the schemas. Holds at most MostSchemas of them, which have at most MostBytes together. Above
// these limits, it destroys the schemas whose last use is oldest. Unloading the library destroys all schemas.
//
// Thread-safe.
namespace SchemaCache {

// Schemas of the library with their reader took 0.2 to 0.3 MB of heap (kxb, kxc and kxd). The limits leave room for
// copies in several threads. The bytes are those of CompiledSchemas::Size, without the headers of the blocks.
constexpr std::size_t MostSchemas = 16;
constexpr std::size_t MostBytes = 16'000'000;

// A schema that a parser is about to load.
struct Wanted {
    VString id;
    XercesInputSource source;
};

// Returns compiled schemas with exactly these texts, in this order, and removes them from the cache. Returns null if
// there are none. Linear in the texts.
std::unique_ptr<CompiledSchemas> Take(const std::vector<Wanted>& texts);
// Adds schemas. They must be clean, and have no loader.
void Put(std::unique_ptr<CompiledSchemas> schemas) noexcept;
void Clear() noexcept;
// Returns the number of schemas in the cache.
std::size_t Count();

}  // namespace SchemaCache
