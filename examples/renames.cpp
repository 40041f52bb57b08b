#include <iostream>

#include "vancorexml/main/parser/DOM.h"
#include "vancorexml/main/parser/DOMParser.h"
#include "vancorexml/main/parser/DOMPath.h"

int main()
{
    DOMParser parser;
    const auto report = parser.ParseXmlString(
        "<report><sheet><field name='[sales].[City]'/><field name='[staff].[City]'/></sheet></report>", "report");

    // The data source "sales" is renamed to "orders", and its field "City" to "Town".
    report->AddDataSourceRename("sales", "orders");
    report->AddFieldRename(FieldName("orders", "City"), FieldName("orders", "Town"));
    const VString path("/report/sheet/field");
    for (const DOMElement& field : DOMPath::Walk(*report->GetDocumentRoot(), path))
        std::cout << field.GetFieldName("name").GetFullValue() << "\n";

    // Files of equal content share one new path. A folder is renamed if all its files moved into one folder.
    PathRenames paths;
    paths.SetCRC("C:\\in\\a.csv", "data/a.csv", 17);
    paths.SetCRC("C:\\in\\copy of a.csv", "data/copy of a.csv", 17);
    report->SetPathRenames(paths);
    for (const char* file : {"C:\\in", "C:\\in\\copy of a.csv", "C:\\other.csv"})
        std::cout << report->GetPathRenames().RenamePath(file).String() << "\n";
}
