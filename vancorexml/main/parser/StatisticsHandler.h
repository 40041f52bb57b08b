// The statistics callback of a parser.
#pragma once

#include <functional>
#include <memory>
#include <utility>

#include "vancorexml/main/parser/DOMParser.h"
#include "vancorexml/main/parser/InputSource.h"

// Holds the statistics handler of a parser, if the caller has set one.
//
// Threads: one at a time.
class StatisticsHandler {
public:
    using Function = std::function<void(const DOMParserStatistics&)>;

    // An empty function removes the handler.
    void Set(Function function) { m_function = std::make_shared<const Function>(std::move(function)); }

    // Calls the handler, if there is one. Keeps it alive until it returns, because it may replace itself or
    // destroy the parser.
    void Call(const InputSource& source) const
    {
        const std::shared_ptr<const Function> function = m_function;
        if (function && *function)
            (*function)({source.Size(), source.Id()});
    }

private:
    std::shared_ptr<const Function> m_function;
};
