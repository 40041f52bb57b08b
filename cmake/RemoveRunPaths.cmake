# Removes the run paths from the programs and libraries of packages. In a package, the libraries lie in a folder of the
# system, which needs no run path.
set(folders "${CPACK_TEMPORARY_INSTALL_DIRECTORY}/*/usr")
file(GLOB files "${folders}/bin/*" "${folders}/lib/*.so*" "${folders}/lib/*/*.so*")
foreach(file ${files})
    if(NOT IS_SYMLINK "${file}")
        file(RPATH_REMOVE FILE "${file}")
    endif()
endforeach()
