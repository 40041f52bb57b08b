#include <iostream>

#include "vancoredata/VResource.h"
#include "vancoreplatform/FileReplacement.h"
#include "vancoreplatform/TextEncoder.h"
#include "vancorexml/main/parser/DOM.h"
#include "vancorexml/main/parser/DOMParser.h"
#include "vancorexml/main/parser/FormulaNames.h"
#include "vancorexml/main/parser/Utf8InputSource.h"
#include "vancorexml/main/parser/XMLComparison.h"
#include "vancorexml/main/parser/XMLDomFormatter.h"
#include "vancorexml/main/parser/XMLSourceEditor.h"
#include "vancorexml/main/parser/XMLSourceFormatter.h"
#include "vancorexml/main/parser/XMLSourceRetargeter.h"

namespace {

void RenderDocument()
{
    DOMParser parser;
    const auto document = parser.ParseXmlString("<book lang='de'/>", "book.xml");
    const DOMElement& book = *document->GetDocumentRoot();
    std::cout << book.GetName() << ": " << XMLDomFormatter::RenderAsXMLString(book, nullptr, false);
    XMLDomFormatter::SaveAsXMLFile(*document, "saved.xml", nullptr, true);
    std::cout << "saved: " << (*parser.ParseXmlFile("saved.xml") == *document) << "\n";
}

void FormatAndEditText()
{
    const std::string text = "<book  lang=\"de\"><!-- new --></book>";
    const std::optional<std::string> formatted = XMLSourceFormatter().Format(text, "book.xml");
    std::cout << "formatted: " << (formatted && XMLComparison::AreEqual(text, *formatted)) << "\n";

    XMLSourceEditor editor(text, "book.xml");
    ElementChange change;
    change.setAttributes = {{"lang", "fr"}};
    editor.Change("/book", change);
    std::cout << "edited: " << editor.Edit().value().text << "\n";
}

void Retarget()
{
    const std::string text = R"(<xs:schema xmlns:xs='http://www.w3.org/2001/XMLSchema'>
        <xs:simpleType name='data-source-name'>
          <xs:annotation>
            <xs:appinfo source='http://vancorexml.invalid/xml/name-role'>data source</xs:appinfo>
          </xs:annotation>
          <xs:restriction base='xs:string'/>
        </xs:simpleType>
        <xs:element name='book'>
          <xs:complexType><xs:attribute name='source' type='data-source-name'/></xs:complexType>
        </xs:element>
      </xs:schema>)";
    Utf8InputSource schema(text, "book.xsd", false);
    const NameRoles roles(schema);
    DOM tables;
    tables.AddDataSourceRename("old", "new");
    XMLSourceRetargeter retargeter(roles, tables);
    const std::optional<EditedText> edited = retargeter.Retarget("<book source='old'/>", "book.xml");
    std::cout << "retargeted: " << edited.value().text << "\n";
    std::cout << "names in a formula: " << FindFormulaNames("[Sales] + [orders].[Tax]").size() << "\n";
}

void FindSchemas()
{
    std::cout << "embedded schemas: " << UTF8StringVResource("VQRC_FILEFORMAT_KXA_XSD").isValid() << "\n";
}

void ReplaceFile()
{
    FileEncoding encoding;
    encoding.name = "UTF-16LE";
    encoding.hasMark = true;
    FileReplacement file("replaced.txt");
    file.Write(EncodeFromUtf8("abc", encoding, nullptr));
    file.Commit();
    std::cout << "other names: " << file.OtherNames() << "\n";
}

}  // namespace

int main()
{
    RenderDocument();
    FormatAndEditText();
    Retarget();
    FindSchemas();
    ReplaceFile();
    return 0;
}
