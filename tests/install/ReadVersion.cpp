// Prints the version resource of a program or a DLL: one line "Name: value" for each string.
//   read_version FILE
#include <windows.h>

// Needs windows.h in front of it.
#include <shellapi.h>

#include <cstddef>
#include <cstdio>
#include <string>
#include <vector>

int main()
{
    int count = 0;
    wchar_t** const arguments = CommandLineToArgvW(GetCommandLineW(), &count);
    if (arguments == nullptr || count != 2)
        return std::fputs("usage: read_version FILE\n", stderr), 2;
    const DWORD size = GetFileVersionInfoSizeW(arguments[1], nullptr);
    std::vector<std::byte> resource(size);
    if (size == 0 || !GetFileVersionInfoW(arguments[1], 0, size, resource.data()))
        return std::fputs("the file has no version resource\n", stderr), 1;

    void* data = nullptr;
    UINT length = 0;
    if (!VerQueryValueW(resource.data(), L"\\", &data, &length) || length != sizeof(VS_FIXEDFILEINFO))
        return std::fputs("the version resource has no numbers\n", stderr), 1;
    const auto& fixed = *static_cast<const VS_FIXEDFILEINFO*>(data);
    const auto print = [](const char* name, DWORD high, DWORD low) {
        std::printf("%s: %d.%d.%d.%d\n", name, HIWORD(high), LOWORD(high), HIWORD(low), LOWORD(low));
    };
    print("file", fixed.dwFileVersionMS, fixed.dwFileVersionLS);
    print("product", fixed.dwProductVersionMS, fixed.dwProductVersionLS);
    std::puts(fixed.dwFileType == VFT_APP ? "type: program" : "type: library");

    for (const char* const name : {"FileDescription",
             "FileVersion",
             "InternalName",
             "OriginalFilename",
             "ProductName",
             "ProductVersion",
             "CompanyName",
             "LegalCopyright"}) {
        const std::wstring path = L"\\StringFileInfo\\040904B0\\" + std::wstring(name, name + std::string(name).size());
        if (VerQueryValueW(resource.data(), path.c_str(), &data, &length))
            std::printf("%s: %ls\n", name, static_cast<const wchar_t*>(data));
    }
}
