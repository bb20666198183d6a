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
# The desktop knows the editor, its icon and its files.
foreach(file applications/fxeditor.desktop icons/hicolor/scalable/apps/fxeditor.svg
        mime/packages/fxeditor-project.xml metainfo/org.basicfilters.fxeditor.metainfo.xml)
    if(NOT EXISTS ${WORK}/second/share/${file})
        message(SEND_ERROR "share/${file} is not installed")
    endif()
endforeach()
execute_process(COMMAND desktop-file-validate ${WORK}/second/share/applications/fxeditor.desktop
    COMMAND_ERROR_IS_FATAL ANY)
execute_process(COMMAND appstreamcli validate --no-net --strict
    ${WORK}/second/share/metainfo/org.basicfilters.fxeditor.metainfo.xml COMMAND_ERROR_IS_FATAL ANY)
execute_process(COMMAND update-mime-database ${WORK}/second/share/mime COMMAND_ERROR_IS_FATAL ANY)
file(STRINGS ${WORK}/second/share/mime/globs types REGEX "application/x-fxeditor-project:[*][.]fxp")
if(NOT types)
    message(SEND_ERROR "the desktop does not know *.fxp")
endif()
execute_process(COMMAND ${CMAKE_COMMAND} -E env QT_QPA_PLATFORM=offscreen LANGUAGE=de LANG=de_DE.UTF-8
    ${WORK}/second/bin/fxeditor --help OUTPUT_VARIABLE help COMMAND_ERROR_IS_FATAL ANY)
if(NOT help MATCHES "Bildfilter|Wendet")
    message(SEND_ERROR "the installed editor does not speak German: ${help}")
endif()
find_program(SCDOC scdoc)
if(SCDOC AND NOT EXISTS ${WORK}/second/share/man/man1/fxrender.1)
    message(SEND_ERROR "the manual page is not installed")
endif()
