// A host that does not link the platform. Loading the plug-in therefore loads every module of the library, and
// unloading the plug-in unloads them.
//   bare_host PLUGIN
// Exits with 0 if the plug-in worked and was unloaded each time.
#include <dlfcn.h>

#include <cstddef>
#include <cstdio>
#include <cstring>

int main(int, char** arguments)
{
    for (int round = 0; round < 2; ++round) {
        void* const plugin = dlopen(arguments[1], RTLD_NOW | RTLD_LOCAL);
        if (plugin == nullptr)
            return std::puts(dlerror()), 1;
        const auto writeMessage =
            reinterpret_cast<void (*)(const char*, char*, std::size_t)>(dlsym(plugin, "WriteMessage"));
        const auto parse = reinterpret_cast<bool (*)()>(dlsym(plugin, "ParseAgainstSchema"));
        char message[200];
        writeMessage("de_DE", message, sizeof message);
        if (std::strncmp(message, "XML-Definitionen", 16) != 0)
            return std::puts(message), 1;
        if (!parse())
            return std::puts("no error found"), 1;
        dlclose(plugin);
        if (dlopen(arguments[1], RTLD_NOW | RTLD_NOLOAD) != nullptr)
            return std::puts("still loaded"), 1;
    }
}
