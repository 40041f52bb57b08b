#include <iostream>

#include "vancorexml/main/parser/ExtensionXmlTokens.h"
#include "vancorexml/main/parser/StandaloneDOMParser.h"

using namespace ExtensionXmlTokens;

int main()
{
    const char* text = R"(<manifest manifest-version='0.1'>
  <dashboard-extension extension-version='1.4.0' id='io.example.notes'>
    <default-locale>en_US</default-locale>
    <source-location><url>https://example.com/notes.html?a=1&amp;b=2</url></source-location>
    <permissions><permission>full data</permission></permissions>
  </dashboard-extension>
</manifest>)";
    const auto [tree, errors] = StandaloneDOMParser().ParseXmlString(text, "notes.xml");
    for (const VString& error : errors)
        std::cout << error << "\n";

    // Each step returns null if there is no such child.
    const StandaloneDOMElement* manifest = tree->GetChild(tagManifest);
    const StandaloneDOMElement* extension = manifest ? manifest->GetChild(tagDashboardExtension) : nullptr;
    if (!extension)
        return 1;
    VString id;
    if (extension->TryGetAttribute(attrId, id))
        std::cout << "id: " << id << "\n";
    if (const StandaloneDOMElement* location = extension->GetChild(tagSourceLocation)) {
        if (const StandaloneDOMElement* url = location->GetChild(tagUrl))
            std::cout << "url: " << url->GetAllText() << "\n";
    }
    if (const StandaloneDOMElement* permissions = extension->GetChild(tagPermissions)) {
        for (const StandaloneDOMElement& permission : permissions->GetChildren())
            std::cout << "permission: " << permission.GetAllText() << "\n";
    }
}
