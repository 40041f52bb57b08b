// The command "vanxml format".
#pragma once

#include <string>

#include "vanxml/RewriteCommand.h"

// Formats documents without losing anything.
class FormatCommand : public RewriteCommand {
public:
    void AddTo(CLI::App& application) override;

protected:
    RewrittenDocument Rewrite(const VString& name, const std::string& bytes) const override;

private:
    std::string m_encoding;  // empty: the encoding of each document
    bool m_noHeader = false;
    bool m_isStrict = false;
};
