// Runs a fuzzer over files without a fuzzing engine. Passes each file unchanged, cut in half, and with one byte
// changed.
#include <cstddef>
#include <cstdint>
#include <fstream>
#include <iostream>
#include <iterator>
#include <string>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);

namespace {

void Run(const std::string& bytes)
{
    LLVMFuzzerTestOneInput(reinterpret_cast<const std::uint8_t*>(bytes.data()), bytes.size());
}

}  // namespace

int main(int argc, char** argv)
{
    for (int i = 1; i < argc; ++i) {
        std::ifstream file(argv[i], std::ios::binary);
        if (!file) {
            std::cerr << "cannot read " << argv[i] << "\n";
            return 1;
        }
        std::string bytes{std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
        Run(bytes);
        Run(bytes.substr(0, bytes.size() / 2));
        for (const char byte : {'<', '&', '\0', '\xFF'}) {
            if (bytes.empty())
                break;
            bytes[bytes.size() / 3] = byte;
            Run(bytes);
        }
    }
    return argc > 1 ? 0 : 2;
}
