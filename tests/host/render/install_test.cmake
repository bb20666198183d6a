# Installs what was built, moves it, and uses it there. Run by ctest with: BUILD, WORK, LIBDIR.
cmake_policy(VERSION 3.25)
file(REMOVE_RECURSE ${WORK})
execute_process(COMMAND ${CMAKE_COMMAND} --install ${BUILD} --prefix ${WORK}/first
    OUTPUT_QUIET COMMAND_ERROR_IS_FATAL ANY)
file(RENAME ${WORK}/first ${WORK}/second)  # nothing may point to where it was

execute_process(COMMAND ${WORK}/second/bin/fxrender list --json
    OUTPUT_VARIABLE filters COMMAND_ERROR_IS_FATAL ANY)
string(JSON count LENGTH "${filters}" filters)
if(count LESS 7)
    message(SEND_ERROR "the installed program knows ${count} filters")
endif()
# The libraries are those that were installed, and none is missing.
file(GET_RUNTIME_DEPENDENCIES EXECUTABLES ${WORK}/second/bin/fxrender
    MODULES ${WORK}/second/${LIBDIR}/BasicFiltersPlugin/libBasicFiltersPlugin.so
    RESOLVED_DEPENDENCIES_VAR found UNRESOLVED_DEPENDENCIES_VAR missing)
foreach(library FxKernelApi ImageProcessor)
    set(taken ${found})
    list(FILTER taken INCLUDE REGEX "/lib${library}[.]so$")
    foreach(file ${taken})
        file(REAL_PATH ${file} file)
        if(NOT file STREQUAL "${WORK}/second/${LIBDIR}/lib${library}.so")
            message(SEND_ERROR "lib${library}.so is not taken from the installation but from ${file}")
        endif()
    endforeach()
    if(NOT taken)
        message(SEND_ERROR "lib${library}.so is not found")
    endif()
endforeach()
if(missing)
    message(SEND_ERROR "missing: ${missing}")
endif()
foreach(file bin/fxcheck share/bash-completion/completions/fxrender share/zsh/site-functions/_fxrender
        share/doc/BasicFiltersPlugin/docs/command-line.md)
    if(NOT EXISTS ${WORK}/second/${file})
        message(SEND_ERROR "${file} is not installed")
    endif()
endforeach()
find_program(SCDOC scdoc)
if(SCDOC AND NOT EXISTS ${WORK}/second/share/man/man1/fxrender.1)
    message(SEND_ERROR "the manual page is not installed")
endif()
