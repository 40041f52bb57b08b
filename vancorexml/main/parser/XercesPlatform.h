// Initialisation and termination of Xerces.
#pragma once

// Keeps Xerces initialised while it lives. The first object initialises Xerces. An exit handler of the
// process terminates it. If an object still lives then, the destructor of the last object terminates it
// instead. For example, a static DOMParser that was constructed before the first parse is destroyed after
// the exit handler runs.
//
// Thread-safe.
class XercesInitializer {
public:
    XercesInitializer();
    ~XercesInitializer();
    XercesInitializer(const XercesInitializer&) = delete;
    XercesInitializer& operator=(const XercesInitializer&) = delete;
};
