# Every installed header compiles on its own, with nothing but the installed headers and the standard library.
file(REMOVE_RECURSE ${WORK})
execute_process(COMMAND ${CMAKE_COMMAND} --install ${BUILD} --config ${CONFIG} --prefix ${WORK} OUTPUT_QUIET
                COMMAND_ERROR_IS_FATAL ANY)
set(include ${WORK}/include/TN61131VM)
file(GLOB_RECURSE headers ${include}/*.h)
if(NOT headers)
    message(FATAL_ERROR "no headers were installed")
endif()
foreach(header ${headers})
    execute_process(COMMAND ${COMPILER} -std=c++20 -fsyntax-only -Wall -Wextra -Werror -I${include} -x c++
                            -include ${header} /dev/null
                    COMMAND_ERROR_IS_FATAL ANY)
endforeach()
