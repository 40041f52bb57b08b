// The types of the product's documents.
#pragma once

// The types with the values 0, 6 and 7 have no schema.
enum XmlFileType {
    XmlFileTypeNone = 0,
    XmlFileTypeKXA = 1,  // an analysis
    XmlFileTypeKXB = 2,  // a data source
    XmlFileTypeKXC = 3,  // a data connection
    XmlFileTypeKXD = 4,  // a map source
    XmlFileTypeKXE = 5,  // a list of captions
    XmlFileTypePreferences = 6,
    XmlFileTypeManifest = 7,  // of an extension
    XmlFileTypeKXF = 8,       // a catalogue of fields
};
