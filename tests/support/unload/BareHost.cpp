// A host that does not link the platform. Loading the plug-in therefore loads every module of the library, and
// unloading the plug-in unloads them.
//   bare_host PLUGIN
// Exits with 0 if the plug-in worked and was unloaded each time.
#include <cstddef>
#include <cstdio>
#include <cstring>

#include "tests/support/unload/DynamicLibrary.h"

int main(int, char** arguments)
{
    for (int round = 0; round < 2; ++round) {
        void* const plugin = DynamicLibrary::Load(arguments[1]);
        if (plugin == nullptr)
            return std::puts("not loaded"), 1;
        const auto writeMessage = DynamicLibrary::Find<void(const char*, char*, std::size_t)>(plugin, "WriteMessage");
        const auto parse = DynamicLibrary::Find<bool()>(plugin, "ParseAgainstSchema");
        char message[200];
        writeMessage("de_DE", message, sizeof message);
        if (std::strncmp(message, "XML-Definitionen", 16) != 0)
            return std::puts(message), 1;
        if (!parse())
            return std::puts("no error found"), 1;
        DynamicLibrary::Unload(plugin);
        if (DynamicLibrary::IsLoaded(arguments[1]))
            return std::puts("still loaded"), 1;
    }
}
