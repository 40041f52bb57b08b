// Decodes the bytes of a file and encodes the text again. The new bytes have the same text and encoding.
#include "fuzz/FuzzSupport.h"
#include "vancoreplatform/FileEncoding.h"
#include "vancoreplatform/TextEncoder.h"
#include "vancoreplatform/VIOException.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    const std::string bytes(reinterpret_cast<const char*>(data), size);
    for (const bool useXmlDeclaration : {true, false}) {
        try {
            const DecodedText decoded = DecodeToUtf8(std::string(bytes), "input", useXmlDeclaration);
            Require(VString::fromStdString(decoded.text).toStdString() == decoded.text, "the text is valid UTF-8");
            bool isReplaced = false;
            const auto replace = [&isReplaced](char32_t) {
                isReplaced = true;
                return std::string("?");
            };
            const std::string encoded = EncodeFromUtf8(decoded.text, decoded.encoding, replace);
            const DecodedText again = DecodeToUtf8(std::string(encoded), "encoded", useXmlDeclaration);
            Require(again.encoding == decoded.encoding, "the encoding stays");
            Require(isReplaced || again.text == decoded.text, "the text stays");
        } catch (const VIO::Exception&) {
            // Bytes that are no text, or a text that the encoding cannot write.
        }
    }
    return 0;
}
