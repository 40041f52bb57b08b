// The messages of Xerces.
#pragma once

#include <map>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include <xercesc/util/XMLMsgLoader.hpp>

#include "vancoreplatform/VString.h"

// Takes messages apart: Xerces passes a number and a text in which the names are already in place.
//
// Threads: one at a time.
class XercesMessages {
public:
    XercesMessages();
    ~XercesMessages();
    XercesMessages(const XercesMessages&) = delete;
    XercesMessages& operator=(const XercesMessages&) = delete;

    // Returns the texts that replaced "{0}", "{1}" and so on in the message `code` of `domain`. A text that cannot be
    // found is empty in the result. Linear in the message.
    std::vector<VString> FindParameters(const XMLCh* domain, unsigned int code, const XMLCh* message);

private:
    const std::u16string& GetTemplate(const XMLCh* domain, unsigned int code);

    std::map<std::u16string, std::unique_ptr<xercesc::XMLMsgLoader>> m_loaders;
    std::map<std::pair<std::u16string, unsigned int>, std::u16string> m_templates;
};
