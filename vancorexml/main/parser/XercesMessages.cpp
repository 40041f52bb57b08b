#include "vancorexml/main/parser/XercesMessages.h"

#include <algorithm>
#include <array>
#include <string_view>

#include <xercesc/util/PlatformUtils.hpp>

namespace {

constexpr std::size_t ParameterCount = 4;

}  // namespace

XercesMessages::XercesMessages() = default;

XercesMessages::~XercesMessages() = default;

const std::u16string& XercesMessages::GetTemplate(const XMLCh* domain, unsigned int code)
{
    std::u16string& text = m_templates[{domain, code}];
    if (!text.empty())
        return text;
    std::unique_ptr<xercesc::XMLMsgLoader>& loader = m_loaders[domain];
    if (!loader)
        loader.reset(xercesc::XMLPlatformUtils::loadMsgSet(domain));
    std::array<XMLCh, 1024> buffer{};
    if (loader && loader->loadMsg(code, buffer.data(), buffer.size() - 1))
        text = buffer.data();
    return text;
}

std::vector<VString> XercesMessages::FindParameters(const XMLCh* domain, unsigned int code, const XMLCh* message)
{
    std::vector<VString> parameters(ParameterCount);
    std::u16string_view rest(message);
    std::u16string_view pattern(GetTemplate(domain, code));
    for (std::size_t brace = pattern.find(u'{'); brace != std::u16string_view::npos; brace = pattern.find(u'{')) {
        const std::size_t number = brace + 1 < pattern.size() ? pattern[brace + 1] - u'0' : ParameterCount;
        if (!rest.starts_with(pattern.substr(0, brace)) || number >= ParameterCount)
            break;
        rest.remove_prefix(brace);
        pattern.remove_prefix(std::min(brace + 3, pattern.size()));
        const std::u16string_view next = pattern.substr(0, pattern.find(u'{'));
        // The last text of the message may contain the text behind it.
        const bool isLast = next.size() == pattern.size();
        const std::size_t end = next.empty() ? rest.size() : isLast ? rest.rfind(next) : rest.find(next);
        if (end == std::u16string_view::npos)
            break;
        parameters[number] = VString(rest.data(), end);
        rest.remove_prefix(end);
    }
    return parameters;
}
