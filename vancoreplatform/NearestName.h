// Suggestions for misspelt names.
#pragma once

#include <vector>

#include "vancoreplatform/Export.h"
#include "vancoreplatform/VString.h"

// Returns the one of `candidates` that `name` is probably meant to be, or an empty string. A candidate is likely if few
// characters are added, removed, replaced or swapped with their neighbour, or if only letter case differs. If several
// candidates are equally likely, returns an empty string, because a wrong suggestion is worse than none.
//
// Thread-safe. The cost grows with the product of the lengths of `name` and of each candidate; names of more than 100
// UTF-16 code units get no suggestion.
VANCOREPLATFORM_API VString FindNearestName(const VString& name, const std::vector<VString>& candidates);
