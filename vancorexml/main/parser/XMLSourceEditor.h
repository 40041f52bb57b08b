// Edits documents and keeps all bytes outside of the edits.
#pragma once

#include <cstddef>
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "vancoreplatform/VString.h"
#include "vancorexml/main/parser/ParseDiagnostic.h"
#include "vancorexml/main/parser/XMLExport.h"

// A replacement of bytes of a text in UTF-8.
struct TextEdit {
    std::size_t offset = 0;
    std::size_t length = 0;  // of the bytes that are replaced; 0 for an insertion
    std::string replacement;

    friend bool operator==(const TextEdit&, const TextEdit&) = default;
};

// Returns the text after the edits, which are sorted by offset. Throws std::invalid_argument if they overlap or exceed
// the text. Linear in the text and the result.
VANCOREXML_API std::string ApplyEdits(std::string_view text, const std::vector<TextEdit>& edits);

// The changes of an element. They are independent of each other. They have no order, except that several fragments for
// the same place are inserted in the order of their list.
//
// A fragment consists of elements, comments and processing instructions. White space between these is allowed, other
// text is not.
struct ElementChange {
    std::vector<std::pair<VString, VString>> setAttributes;  // names and values
    std::vector<VString> removeAttributes;                   // an absent attribute is not an error
    std::optional<VString> text;
    std::optional<VString> name;
    bool isDeleted = false;          // excludes all other changes except `before` and `after`
    std::vector<VString> before;     // fragments in front of the element
    std::vector<VString> prepended;  // fragments in front of its content
    std::vector<VString> appended;   // fragments behind its content
    std::vector<VString> after;      // fragments behind the element
};

// An edited document.
struct EditedText {
    std::string text;             // UTF-8
    std::vector<TextEdit> edits;  // of the original text: sorted by offset, without overlaps
};

// Edits the text of a document. Only the bytes of the edits change: all others stay, also quotes, the order of
// attributes, white space inside tags, line ends, comments and the document type.
//
// All changes apply to the document as it was read. Several changes of one element combine. A change inside a deleted
// element has no effect.
//
// How each change is written:
//   - A new value of an attribute is escaped for the quotes of the old value. An attribute that already has the value
//     does not change.
//   - An added attribute is written behind the last attribute, with the same quotes. If the last attribute is on a
//     new line, the added attribute gets the same line end and indentation, and otherwise one blank. In a tag without
//     attributes, it gets apostrophes.
//   - With a removed attribute, the white space in front of it is removed.
//   - A text replaces the first text of the element that is not white space only. It is written as a CDATA section if
//     it replaces one and can be written as one. All other text of the element is removed. Comments and processing
//     instructions stay. An element that already has the text does not change. An empty tag becomes a start tag and an
//     end tag.
//   - With a deleted element that is alone on its line, the whole line is removed.
//   - The elements, comments and processing instructions of a fragment get lines of their own if their neighbours are
//     on lines of their own. They take the line end and the indentation of these neighbours; further lines of the
//     fragment are indented as far. Otherwise they are written without white space between them, and always so inside
//     an element that contains text beside other content, or whose xml:space is "preserve".
//
// The result is verified: it must be equal to the tree of the original, edited by the operations of DOMElement.
//
// Ownership: refers to the text, which must outlive the editor. Owns the diagnostics.
//
// Threads: one at a time.
//
//     XMLSourceEditor editor(text, "orders.kxa");
//     ElementChange change;
//     change.setAttributes = {{"caption", "Sales"}};
//     editor.Change("/orders//table", change);
//     if (const std::optional<EditedText> edited = editor.Edit())
//         Save(edited->text);
//     else
//         Show(editor.GetDiagnostics());
class VANCOREXML_API XMLSourceEditor {
public:
    struct Options {
        // Returns false for a character that the encoding of the file lacks. Such a character is written as a
        // reference; in a name, a comment or a processing instruction it is an error. Empty if the encoding has all
        // characters.
        std::function<bool(char32_t)> canEncode;
    };

    // `text` is a document in UTF-8 without a byte order mark; the encoding that it declares is ignored. White space
    // in front of the document is allowed. `id` is the source in diagnostics.
    XMLSourceEditor(const std::string& text, const VString& id);
    XMLSourceEditor(const std::string& text, const VString& id, Options options);
    ~XMLSourceEditor();
    XMLSourceEditor(const XMLSourceEditor&) = delete;
    XMLSourceEditor& operator=(const XMLSourceEditor&) = delete;

    // Changes all elements that match the path, as DOMPath::Walk selects them from the document element.
    void Change(const VString& path, const ElementChange& change);
    // Changes one element. `number` is the number of its start tag in the text, from 0.
    void ChangeElement(std::size_t number, const ElementChange& change);

    // Returns the edited document. Returns no value if there are errors:
    //   - the document or a fragment is not well-formed, or the edited document would not be
    //   - two changes contradict each other: two values or names, or the removal of an attribute that is set
    //   - a text for an element with child elements
    //   - a change of an element in the expansion of an entity
    //   - a document without an element, or with two
    //   - a name or character that XML does not allow, or that the encoding lacks
    //   - a change that the attribute declarations of the document type contradict: the removal of an attribute with a
    //     default, a new name for which elements have default attributes, or a value that the declared type would
    //     normalize
    // Each error of an element has its position and its path; an error of the last kind has only the path. A path
    // without a match is a warning.
    //
    // Throws std::out_of_range if ChangeElement was called with a number that the text does not have. Throws
    // XMLVerificationError if the result is not equal to the edited tree; this is a fault of the library.
    //
    // Linear in the text, in the result and in the expansion of entities; the cost of a path for each element is that
    // of DOMPath::Walk. The call stack does not grow with the depth of the document. Uses the memory of the result, of
    // a DOM of the document, and of the edits.
    std::optional<EditedText> Edit();

    // Returns the errors and warnings of the last call of Edit, in the order of the text. At most 100 errors are
    // reported. Valid until the next call.
    const std::vector<ParseDiagnostic>& GetDiagnostics() const noexcept { return m_diagnostics; }

private:
    class Session;

    const std::string& m_text;
    VString m_id;
    Options m_options;
    std::vector<std::pair<VString, ElementChange>> m_pathChanges;
    std::vector<std::pair<std::size_t, ElementChange>> m_elementChanges;
    std::vector<ParseDiagnostic> m_diagnostics;
};
