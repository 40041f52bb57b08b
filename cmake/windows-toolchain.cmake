# Compiles for 64-bit Windows with mingw-w64 on Linux, and runs the tests with Wine. The environment variable
# VANCOREXML_WINDOWS_LIBRARIES is the folder that scripts/windows-libraries made.
set(CMAKE_SYSTEM_NAME Windows)
set(CMAKE_SYSTEM_PROCESSOR x86_64)

set(CMAKE_C_COMPILER x86_64-w64-mingw32-gcc-posix)
set(CMAKE_CXX_COMPILER x86_64-w64-mingw32-g++-posix)
set(CMAKE_RC_COMPILER x86_64-w64-mingw32-windres)

# CMake starts again when the build files change, and then the environment variable may be missing.
if(NOT VANCOREXML_WINDOWS_LIBRARIES)
    if(NOT EXISTS "$ENV{VANCOREXML_WINDOWS_LIBRARIES}/include")
        # CMake has not looked for the build program yet. Without one, it would add the wrong error that there is none.
        find_program(CMAKE_MAKE_PROGRAM ninja NO_CACHE)
        message(FATAL_ERROR "The environment variable VANCOREXML_WINDOWS_LIBRARIES must name the folder with the "
            "libraries for Windows. To set it, and to build the libraries first if they are missing, run this command "
            "in the root of the repository of vancorexml:\n"
            "  export VANCOREXML_WINDOWS_LIBRARIES=$(scripts/windows-libraries)\n"
            "Then run cmake again.")
    endif()
    set(VANCOREXML_WINDOWS_LIBRARIES "$ENV{VANCOREXML_WINDOWS_LIBRARIES}" CACHE PATH "Libraries for Windows" FORCE)
endif()
list(APPEND CMAKE_TRY_COMPILE_PLATFORM_VARIABLES VANCOREXML_WINDOWS_LIBRARIES)

# CMAKE_PREFIX_PATH may name the installed library.
set(CMAKE_FIND_ROOT_PATH "${VANCOREXML_WINDOWS_LIBRARIES}" /usr/x86_64-w64-mingw32 ${CMAKE_PREFIX_PATH})
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_PACKAGE ONLY)

# Wine finds the DLLs of the libraries and of the compiler in this folder. A list of folders would need a semicolon,
# which does not survive, because CMake passes the emulator through several lists.
set(CMAKE_CROSSCOMPILING_EMULATOR
    /usr/bin/env WINEDEBUG=-all "WINEPATH=Z:${VANCOREXML_WINDOWS_LIBRARIES}/bin" /usr/lib/wine/wine64)
