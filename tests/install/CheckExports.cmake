# Every symbol a library exports is one of ours, or type information that the language makes
# every library share.
foreach(library ${LIBRARIES})
    execute_process(COMMAND "${NM}" -D --defined-only -C "${library}" RESULT_VARIABLE result OUTPUT_VARIABLE symbols)
    if(NOT result EQUAL 0 OR symbols STREQUAL "")
        message(FATAL_ERROR "${NM} could not read ${library}")
    endif()
    string(REPLACE ";" "," symbols "${symbols}")
    string(REPLACE "\n" ";" symbols "${symbols}")
    foreach(symbol ${symbols})
        # Only what the linker always resolves here: text, data and read-only data.
        if(symbol MATCHES "^[0-9a-f]+ [TDBR] (xercesc|xercesc_3_2|Q[A-Z]|qt_|boost::)")
            message(FATAL_ERROR "${library} exports a foreign symbol: ${symbol}")
        endif()
    endforeach()
endforeach()
