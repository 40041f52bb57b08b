// Applies an arbitrary path to a tree. Nothing may crash, all queries must return the same matches, and all matches
// must belong to the tree.
#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "fuzz/Require.h"
#include "vancorexml/main/parser/DOMParser.h"
#include "vancorexml/main/parser/DOMPath.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    static const auto document =
        DOMParser().ParseXmlString("<a><b><a/><c><b/></c></b><a><b><b/></b></a><c/></a>", "tree");
    const DOMElement& root = *document->GetDocumentRoot();
    const VString path = VString::fromUtf8(reinterpret_cast<const char*>(data), size);
    const std::vector<const DOMElement*> all = DOMPath::GetAll(root, path);
    Require(DOMPath::GetFirst(root, path) == (all.empty() ? nullptr : all.front()),
        "GetFirst returns the first match of GetAll");
    std::size_t walked = 0;
    auto matches = DOMPath::Walk(root, path);
    for (const DOMElement& match : matches) {
        Require(walked < all.size() && all[walked] == &match, "Walk visits the matches of GetAll in order");
        Require(&match == &root || match.IsChildOf(root), "a match belongs to the tree");
        ++walked;
    }
    Require(walked == all.size(), "Walk visits all matches of GetAll");
    return 0;
}
