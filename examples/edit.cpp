#include <iostream>

#include "vancorexml/main/parser/XMLSourceEditor.h"

int main()
{
    const std::string text = R"(<!-- The stock of May -->
<shop currency="EUR">
    <item name="tea"  price="3"/>  <!-- per box -->
    <item name="milk" price="2"/>
</shop>
)";
    ElementChange newPrice;
    newPrice.setAttributes = {{"price", "4"}};
    ElementChange newItem;
    newItem.appended = {"<item name='sugar' price='1'/>"};

    XMLSourceEditor editor(text, "shop.xml");
    editor.ChangeElement(1, newPrice);  // the element 0 is <shop>
    editor.Change("/shop", newItem);
    if (const std::optional<EditedText> edited = editor.Edit()) {
        for (const TextEdit& edit : edited->edits)
            std::cout << edit.length << " bytes at " << edit.offset << " become " << edit.replacement.size() << "\n";
        std::cout << edited->text;
    }

    // One change that cannot apply is enough: then there is no edited text.
    ElementChange newText;
    newText.text = "closed";
    editor.Change("/shop", newText);
    if (!editor.Edit()) {
        for (const ParseDiagnostic& diagnostic : editor.GetDiagnostics())
            std::cout << diagnostic.path << " on line " << diagnostic.start.line << ": " << diagnostic.message << "\n";
    }
}
