// The fixed parts of the page that "vanxml check --format html" writes.
#pragma once

namespace HtmlPage {

// The start of the page.
extern const char* const Start;
// The content of the element <style>.
extern const char* const Style;
// The content of the element <style> for browsers without scripts. It shows the messages that are folded.
extern const char* const StyleWithoutScript;
// The start of the section with the documents, to the first row of its table.
extern const char* const TableStart;
// The content of the element <script> at the end of the page. It adds the filters.
extern const char* const Script;

}  // namespace HtmlPage
