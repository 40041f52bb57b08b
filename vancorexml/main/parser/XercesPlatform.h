// Initialisation and termination of Xerces.
#pragma once

// Keeps Xerces initialised while it lives. The first object registers an exit handler and initialises
// Xerces. The exit handler terminates Xerces. If an object still lives when the handler runs, the
// destructor of the last object terminates Xerces instead. For example, a static DOMParser may be
// constructed before the first parse registers the handler. The handler then runs before the destructor
// of the DOMParser, because a process undoes constructions and registrations in reverse order.
//
// Thread-safe.
class XercesInitializer {
public:
    XercesInitializer();
    ~XercesInitializer();
    XercesInitializer(const XercesInitializer&) = delete;
    XercesInitializer& operator=(const XercesInitializer&) = delete;
};
