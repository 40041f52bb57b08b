// The command "vanxml format".
#pragma once

#include <string>

#include "vanxml/RewriteCommand.h"

class DOM;

// Parses documents and writes them as the library renders them.
class FormatCommand : public RewriteCommand {
public:
    void AddTo(CLI::App& application) override;

protected:
    RewrittenDocument Rewrite(const VString& name, const std::string& bytes) const override;

private:
    VString Render(const DOM& document) const;

    bool m_noHeader = false;
    bool m_isStrict = false;
};
