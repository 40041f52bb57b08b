// The life of Xerces in the process.
#pragma once

// Keeps Xerces initialised while it lives. Xerces is initialised on first use. It is terminated by
// an exit handler of the process, or when the last XercesUse dies after that: a static parser that
// is older than the first parse is destroyed after the exit handler runs.
//
// Threads: safe.
class XercesUse {
public:
    XercesUse();
    ~XercesUse();
    XercesUse(const XercesUse&) = delete;
    XercesUse& operator=(const XercesUse&) = delete;
};
