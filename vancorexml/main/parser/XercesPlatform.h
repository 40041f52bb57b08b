// Initialisation and termination of Xerces.
#pragma once

// Keeps Xerces initialised while it lives. The first object initialises Xerces and registers a handler, which
// terminates Xerces when the library is unloaded. If an object still lives when the handler runs, the destructor of the
// last object terminates Xerces instead. Xerces is not terminated when the process ends, because other threads may
// still parse.
//
// Thread-safe.
class XercesInitializer {
public:
    // Throws std::bad_alloc if there is not enough memory. A later object then tries again, except if one of the few
    // allocations failed that Xerces or ICU makes by itself while Xerces is initialised: Xerces cannot be used any more
    // in this process, and each later object throws the same exception.
    XercesInitializer();
    ~XercesInitializer();
    XercesInitializer(const XercesInitializer&) = delete;
    XercesInitializer& operator=(const XercesInitializer&) = delete;
};
