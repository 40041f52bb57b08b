// Checks of the values of options, with messages for people.
#pragma once

#include <CLI/CLI.hpp>

#include <cstdint>
#include <string>
#include <vector>

// The value must be a whole number in decimal digits, from `least` to `most`.
CLI::Validator IsWholeNumber(std::uint64_t least, std::uint64_t most);

// The value must be one of these. The message suggests the most similar one.
CLI::Validator IsOneOf(const std::vector<std::string>& values);
