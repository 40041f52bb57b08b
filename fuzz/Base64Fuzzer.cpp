// Compares the Base64 operations with those of Qt and with plain forms.
// Input: bytes to encode, which are also a text to decode.
#include <QByteArray>

#include "fuzz/FuzzSupport.h"
#include "vancorexml/main/parser/Base64.h"

namespace {

const std::string Alphabet = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";

bool IsBase64Plainly(const std::string& text)
{
    const std::size_t end = std::min(text.find('='), text.size());
    const std::size_t padding = text.size() - end;
    return text.size() % 4 == 0 && padding <= 2 && text.find_first_not_of(Alphabet) >= end &&
        text.find_first_not_of('=', end) == std::string::npos;
}

void CheckEncoding(const std::uint8_t* data, std::size_t size, bool splitLines)
{
    std::vector<VString> lines;
    Base64Encode(data, static_cast<unsigned int>(size), lines, splitLines);
    Require(splitLines || lines.size() <= 1, "without splitting there is at most one line");
    for (std::size_t i = 0; splitLines && i < lines.size(); ++i) {
        Require(i + 1 < lines.size() ? lines[i].length() == 72 : lines[i].length() <= 72, "a line has 72 characters");
        Require(IsBase64(lines[i]), "each line is Base64");
    }
    const VString text = VString::join(lines, VString());
    const QByteArray bytes(reinterpret_cast<const char*>(data), static_cast<int>(size));
    Require(text.toStdString() == bytes.toBase64().toStdString(), "the encoding is that of Qt");
    std::vector<unsigned char> decoded;
    Base64Decode(VString::join(lines, "\n"), decoded);
    Require(decoded == std::vector<unsigned char>(data, data + size), "decoding restores the bytes");
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    CheckEncoding(data, size, true);
    CheckEncoding(data, size, false);
    const std::string bytes(reinterpret_cast<const char*>(data), size);
    const VString text = VString::fromStdString(bytes);
    // A character beyond ASCII is invalid, whatever its low byte is.
    Require(IsBase64(text) == IsBase64Plainly(text.toStdString()), "IsBase64 agrees with the plain form");
    std::vector<unsigned char> decoded(3, 'x');
    Base64Decode(text, decoded);
    Require(decoded.size() <= (static_cast<std::size_t>(text.length()) + 3) / 4 * 3, "decoding does not add bytes");
    if (IsBase64(text)) {
        const QByteArray expected = QByteArray::fromBase64(QByteArray::fromStdString(bytes));
        Require(std::string(decoded.begin(), decoded.end()) == expected.toStdString(), "the decoding is that of Qt");
    }
    return 0;
}
