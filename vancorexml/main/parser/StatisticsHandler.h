// Telling a caller what was parsed.
#pragma once

#include <functional>
#include <memory>
#include <utility>

#include "vancorexml/main/parser/DOMParser.h"
#include "vancorexml/main/parser/InputSource.h"

// The statistics handler of a parser: a function of the caller's, or none.
//
// Threads: one at a time.
class StatisticsHandler {
public:
    using Function = std::function<void(const DOMParserStatistics&)>;

    // An empty function removes the handler.
    void Set(Function function) { m_function = std::make_shared<const Function>(std::move(function)); }

    // The function and its captures live until it returns, also when it replaces itself or
    // destroys the parser.
    void Call(const InputSource& source) const
    {
        const std::shared_ptr<const Function> function = m_function;
        if (function && *function)
            (*function)({source.Size(), source.Id()});
    }

private:
    std::shared_ptr<const Function> m_function;
};
