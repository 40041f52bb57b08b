# Installs the DLLs of other projects that `program` and its DLLs need, and their licences. Fails if a DLL cannot be
# found or has no licence. The variables:
#   program      the path of the program
#   own_dlls     the file names of the project's DLLs, which are installed separately
#   dll_folders  the folders that have the other DLLs
#   objdump      the program that reads the DLLs
#   strip        the program that removes debug information
#   links        a folder for temporary links

# Sets the policies of this script: if(IN_LIST) needs one of them.
cmake_minimum_required(VERSION 3.22)

# These DLLs belong to Windows.
set(windows_dlls advapi32 dnsapi gdi32 iphlpapi kernel32 mpr msvcrt netapi32 ntdll ole32 rpcrt4 secur32 shell32 ucrtbase
    user32 userenv version winmm ws2_32 "api-ms-win-.*" "ext-ms-.*")
list(JOIN windows_dlls "|" windows_dlls)

# CMake looks for the names of DLLs in lower case, but the file system distinguishes the cases. The first folder that
# has a DLL comes last here, so its link stays.
file(REMOVE_RECURSE "${links}")
file(MAKE_DIRECTORY "${links}")
list(REVERSE dll_folders)
foreach(folder ${dll_folders})
    file(GLOB paths "${folder}/*.dll")
    foreach(path ${paths})
        get_filename_component(name "${path}" NAME)
        string(TOLOWER "${name}" name)
        file(CREATE_LINK "${path}" "${links}/${name}" SYMBOLIC)
    endforeach()
endforeach()

set(CMAKE_GET_RUNTIME_DEPENDENCIES_PLATFORM windows+pe)
set(CMAKE_GET_RUNTIME_DEPENDENCIES_TOOL objdump)
set(CMAKE_GET_RUNTIME_DEPENDENCIES_COMMAND "${objdump}")
file(GET_RUNTIME_DEPENDENCIES
    EXECUTABLES "${program}"
    RESOLVED_DEPENDENCIES_VAR dlls
    DIRECTORIES "${links}"
    PRE_EXCLUDE_REGEXES "^(${windows_dlls})\\.dll$")

# Installs the licence of a part that another project made: the copyright file of a Debian package, and the common
# licences to which that file refers.
function(install_licence package)
    set(folder "${CMAKE_INSTALL_PREFIX}/licences")
    if(NOT EXISTS "/usr/share/doc/${package}/copyright")
        message(FATAL_ERROR "the licence of ${package} is not installed")
    endif()
    file(INSTALL "/usr/share/doc/${package}/copyright" DESTINATION "${folder}" RENAME "${package}.txt")
    foreach(licence ${ARGN})
        file(INSTALL "/usr/share/common-licenses/${licence}" DESTINATION "${folder}" RENAME "${licence}.txt")
    endforeach()
endfunction()

foreach(dll ${dlls})
    file(REAL_PATH "${dll}" dll)
    get_filename_component(name "${dll}" NAME)
    if(name IN_LIST own_dlls)
        continue()
    elseif(name STREQUAL "Qt5Core.dll")
        install_licence(libqt5core5a LGPL-3 GPL-3 Apache-2.0)
    elseif(name STREQUAL "libxerces-c.dll")
        install_licence(libxerces-c3.2 Apache-2.0)
    elseif(name MATCHES "^lib(stdc[+][+]|gcc_s_seh)-")
        install_licence(gcc-mingw-w64-x86-64-posix-runtime GPL-3)
    elseif(name MATCHES "^libwinpthread-")
        install_licence(mingw-w64-x86-64-dev)
    else()
        message(FATAL_ERROR "the licence of ${name} is unknown")
    endif()
    file(INSTALL "${dll}" DESTINATION "${CMAKE_INSTALL_PREFIX}/bin")
    execute_process(COMMAND "${strip}" "$ENV{DESTDIR}${CMAKE_INSTALL_PREFIX}/bin/${name}" COMMAND_ERROR_IS_FATAL ANY)
endforeach()
# The program contains code of CLI11.
install_licence(libcli11-dev)
