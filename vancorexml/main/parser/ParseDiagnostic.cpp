#include "vancorexml/main/parser/ParseDiagnostic.h"

#include <algorithm>
#include <new>

void ThrowIfOutOfMemory(const std::vector<ParseDiagnostic>& diagnostics)
{
    const auto isOutOfMemory = [](const ParseDiagnostic& diagnostic) {
        return diagnostic.code == DiagnosticCode::OutOfMemory;
    };
    if (std::any_of(diagnostics.begin(), diagnostics.end(), isOutOfMemory))
        throw std::bad_alloc();
}
