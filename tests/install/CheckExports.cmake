# Fails if a library exports a symbol of Xerces-C, Qt or Boost, or a member of a private class or namespace. Functions
# outside classes are not checked. The variables:
#   LIBRARIES      the shared libraries
#   PRIVATE_NAMES  the names of the private classes and namespaces
#   NM             the program that lists the symbols of a library; not used for DLLs
#   OBJDUMP        the program that lists the exports of a DLL; empty if the libraries are not DLLs
#   CXXFILT        the program that translates the names of the exports of a DLL

# Sets `symbols` to the list of the names that a library exports. Commas replace the semicolons in names.
function(list_exports library)
    if(OBJDUMP)
        execute_process(COMMAND "${OBJDUMP}" -p "${library}" COMMAND "${CXXFILT}"
            RESULTS_VARIABLE results OUTPUT_VARIABLE output)
        # The table begins with this title and ends with an empty line. A line is "[ordinal] name".
        string(REGEX MATCH "\\[Ordinal/Name Pointer\\] Table\n.*" output "${output}")
        string(REGEX REPLACE "\n\n.*" "\n" output "${output}")
        set(line "\t\\[ *[0-9]+\\] ([^\n]*)\n")
    else()
        execute_process(COMMAND "${NM}" -D --defined-only -C "${library}"
            RESULTS_VARIABLE results OUTPUT_VARIABLE output)
        # T, D, B and R are the strong symbols: code, data, zero-initialised data and read-only data. Weak symbols are
        # allowed, because the libraries must share type information and inline functions with each other.
        set(line "[0-9a-f]+ [TDBR] ([^\n]*)\n")
    endif()
    string(REGEX REPLACE ";?0" "" failures "${results}")
    string(REPLACE ";" "," output "${output}")
    string(REGEX MATCHALL "${line}" lines "${output}")
    if(failures OR NOT lines)
        message(FATAL_ERROR "the exports of ${library} could not be read")
    endif()
    list(TRANSFORM lines REPLACE "${line}" "\\1")
    # The data that the compiler makes for a class belongs to the class.
    list(TRANSFORM lines REPLACE "^(vtable|VTT|typeinfo|typeinfo name|guard variable) for |^[a-z-]+ thunk to " "")
    set(symbols "${lines}" PARENT_SCOPE)
endfunction()

list(JOIN PRIVATE_NAMES "|" private_names)
foreach(library ${LIBRARIES})
    list_exports("${library}")
    foreach(symbol ${symbols})
        if(symbol MATCHES "^(xercesc|xercesc_3_2|Q[A-Z]|qt_|boost::|testing::)")
            message(FATAL_ERROR "${library} exports a foreign symbol: ${symbol}")
        endif()
        if(symbol MATCHES "^(${private_names})(::|$)")
            message(FATAL_ERROR "${library} exports a private symbol: ${symbol}")
        endif()
    endforeach()
endforeach()
