// Runs a program in a console of Windows, and prints how it ended and what the console shows. Start it with the flag
// CREATE_NO_WINDOW, so that the system starts a console without a window for it. Its standard streams must not be a
// console.
//   console_runner MILLISECONDS PROGRAM ARGUMENTS...
// If MILLISECONDS is not negative, the program gets the event Ctrl+C after this time. The lines of the report:
//   exit code HEXADECIMAL
//   mode BEFORE AFTER, of the console in hexadecimal
//   colours yes|no, whether a character on the screen has other colours than the standard ones
//   the lines of the screen that are not empty, in UTF-8
#include <cstdio>
#include <cstdlib>
#include <string>
#include <vector>

#include <windows.h>

// Needs windows.h in front of it.
#include <shellapi.h>

namespace {

HANDLE OpenConsole(const wchar_t* name)
{
    SECURITY_ATTRIBUTES inherited{sizeof inherited, nullptr, TRUE};
    constexpr DWORD access = GENERIC_READ | GENERIC_WRITE;
    constexpr DWORD sharing = FILE_SHARE_READ | FILE_SHARE_WRITE;
    return CreateFileW(name, access, sharing, &inherited, OPEN_EXISTING, 0, nullptr);
}

DWORD ModeOf(HANDLE console)
{
    DWORD mode = 0;
    return GetConsoleMode(console, &mode) ? mode : ~0u;
}

// Returns the part of the command line behind the name of this program and the time.
const wchar_t* FindCommand(const wchar_t* milliseconds)
{
    const wchar_t* const found = wcsstr(GetCommandLineW(), (std::wstring(L" ") + milliseconds + L" ").c_str());
    return found ? found + wcslen(milliseconds) + 2 : L"";
}

std::string ToUtf8(const std::wstring& text)
{
    std::string bytes(3 * text.size(), '\0');
    const int size = WideCharToMultiByte(CP_UTF8,
        0,
        text.data(),
        static_cast<int>(text.size()),
        bytes.data(),
        static_cast<int>(bytes.size()),
        nullptr,
        nullptr);
    bytes.resize(static_cast<std::size_t>(size));
    return bytes;
}

void PrintScreen(HANDLE console)
{
    CONSOLE_SCREEN_BUFFER_INFO information{};
    GetConsoleScreenBufferInfo(console, &information);
    const auto width = static_cast<DWORD>(information.dwSize.X);
    bool hasColours = false;
    std::string screen;
    for (SHORT row = 0; row <= information.dwCursorPosition.Y; ++row) {
        std::wstring line(width, L' ');
        std::vector<WORD> attributes(width);
        DWORD count = 0;
        ReadConsoleOutputCharacterW(console, line.data(), width, {0, row}, &count);
        line.resize(count);
        line.erase(line.find_last_not_of(L' ') + 1);
        ReadConsoleOutputAttribute(console, attributes.data(), width, {0, row}, &count);
        constexpr WORD colours = 0xFF;  // the other bits mark wide characters
        for (std::size_t column = 0; column < line.size(); ++column)
            hasColours = hasColours || (attributes[column] & colours) != (information.wAttributes & colours);
        if (!line.empty())
            screen += ToUtf8(line) + "\n";
    }
    std::printf("colours %s\n%s", hasColours ? "yes" : "no", screen.c_str());
}

BOOL WINAPI IgnoreEvent(DWORD)
{
    return TRUE;
}

}  // namespace

int main()
{
    int count = 0;
    wchar_t** const arguments = CommandLineToArgvW(GetCommandLineW(), &count);
    if (!arguments || count < 3)
        return 2;
    const int milliseconds = static_cast<int>(wcstol(arguments[1], nullptr, 10));
    const HANDLE output = OpenConsole(L"CONOUT$");
    STARTUPINFOW startup{};
    startup.cb = sizeof startup;
    startup.dwFlags = STARTF_USESTDHANDLES;
    startup.hStdInput = OpenConsole(L"CONIN$");
    startup.hStdOutput = output;
    startup.hStdError = output;
    const DWORD before = ModeOf(output);
    std::wstring command = FindCommand(arguments[1]);
    PROCESS_INFORMATION process{};
    constexpr BOOL inheritsHandles = TRUE;
    if (!CreateProcessW(
            nullptr, command.data(), nullptr, nullptr, inheritsHandles, 0, nullptr, nullptr, &startup, &process)) {
        std::printf("error %lu\n", GetLastError());
        return 2;
    }
    if (milliseconds >= 0) {
        WaitForSingleObject(process.hProcess, static_cast<DWORD>(milliseconds));
        // All processes of the console get the event, also this one.
        SetConsoleCtrlHandler(IgnoreEvent, TRUE);
        GenerateConsoleCtrlEvent(CTRL_C_EVENT, 0);
    }
    WaitForSingleObject(process.hProcess, 120000);
    DWORD code = 0;
    GetExitCodeProcess(process.hProcess, &code);
    std::printf("exit code %lx\nmode %lx %lx\n", code, before, ModeOf(output));
    PrintScreen(output);
    return 0;
}
