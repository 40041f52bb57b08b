// The life of Xerces in the process.
#pragma once

// Keeps Xerces initialised while it lives. Xerces is initialised on first use. It is terminated by
// an exit handler of the process, or when the last XercesInitializer dies after that: a static parser that
// is older than the first parse is destroyed after the exit handler runs.
//
// Threads: safe.
class XercesInitializer {
public:
    XercesInitializer();
    ~XercesInitializer();
    XercesInitializer(const XercesInitializer&) = delete;
    XercesInitializer& operator=(const XercesInitializer&) = delete;
};
