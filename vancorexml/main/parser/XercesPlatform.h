// The life of Xerces in the process.
#pragma once

// Xerces is initialised when it is first used and terminated when the process exits. A
// parser may die later still, when it is a static object older than the first parse: Xerces
// stays while anybody holds a XercesUse.
//
// Threads: safe.
class XercesUse {
public:
    XercesUse();
    ~XercesUse();
    XercesUse(const XercesUse&) = delete;
    XercesUse& operator=(const XercesUse&) = delete;
};
