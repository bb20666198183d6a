# The plug-in without the reference host, against a development kit made of the built host libraries and their headers.
# Run by ctest with: SOURCE, WORK, QT, LIBRARIES (files), RENDERER, GENERATOR.
cmake_policy(VERSION 3.25)
file(REMOVE_RECURSE ${WORK})
file(COPY ${LIBRARIES} DESTINATION ${WORK}/kit/lib)
foreach(folder FxKernelApi ImageProcessor)
    file(COPY ${SOURCE}/framework/contract/${folder} DESTINATION ${WORK}/kit/include)
endforeach()

# What a user has: the sources, with the kit's headers in the place of the two folders.
foreach(part CMakeLists.txt numeric framework filters plugin resources)
    file(COPY ${SOURCE}/${part} DESTINATION ${WORK}/source)
endforeach()
foreach(folder FxKernelApi ImageProcessor)
    file(REMOVE_RECURSE ${WORK}/source/framework/contract/${folder})
    file(COPY ${WORK}/kit/include/${folder} DESTINATION ${WORK}/source/framework/contract)
endforeach()

# configure(FOLDER OPTION...): sets `result` and `said`.
macro(configure folder)
    execute_process(
        COMMAND ${CMAKE_COMMAND} -G ${GENERATOR} -S ${WORK}/source -B ${WORK}/${folder} ${ARGN}
        RESULT_VARIABLE result OUTPUT_VARIABLE said ERROR_VARIABLE said)
    string(REGEX REPLACE "[ \n]+" " " said "${said}")
endmacro()
function(expect_refusal)
    foreach(word ${ARGN})
        string(FIND "${said}" "${word}" at)
        if(result EQUAL 0 OR at EQUAL -1)
            message(SEND_ERROR "expected a refusal that says '${word}', got ${result}: ${said}")
        endif()
    endforeach()
endfunction()
function(expect_success what)
    if(NOT result EQUAL 0)
        message(FATAL_ERROR "${what} failed: ${said}")
    endif()
endfunction()

configure(unknown -DFX_QT=${QT} -DFX_HOST=OFF -DFX_TESTS=OFF)
expect_refusal("library FxKernelApi was not found" "-DFX_KIT_DIR=FOLDER")
file(REMOVE_RECURSE ${WORK}/unknown)
configure(with_host -DFX_QT=4 -DCMAKE_MODULE_PATH=${SOURCE}/tests/plugin/qt4)
expect_refusal("-DFX_HOST=OFF -DFX_TESTS=OFF")
configure(qt4 -DFX_QT=4 -DFX_HOST=OFF -DFX_TESTS=OFF -DFX_KIT_DIR=${WORK}/kit
    -DCMAKE_MODULE_PATH=${SOURCE}/tests/plugin/qt4)
expect_success("configuring with Qt 4")

configure(build -DFX_QT=${QT} -DFX_HOST=OFF -DFX_TESTS=OFF -DFX_KIT_DIR=${WORK}/kit -DCMAKE_BUILD_TYPE=Debug)
expect_success("configuring")
execute_process(COMMAND ${CMAKE_COMMAND} --build ${WORK}/build
    RESULT_VARIABLE result OUTPUT_VARIABLE said ERROR_VARIABLE said)
expect_success("building")

# A host loads it, with every symbol bound: the filters it lists come from the library's entry points.
set(plugin ${WORK}/build/plugins/libBasicFiltersPlugin.so)
execute_process(COMMAND ${CMAKE_COMMAND} -E env LD_BIND_NOW=1 QT_QPA_PLATFORM=offscreen ${RENDERER} list --plugin ${plugin}
    RESULT_VARIABLE result OUTPUT_VARIABLE listed ERROR_VARIABLE said)
expect_success("loading ${plugin}")
foreach(key "Channel separation" "Object separator")
    string(FIND "${listed}" "${key}" at)
    if(at EQUAL -1)
        message(SEND_ERROR "the library offers no ${key}: ${listed}")
    endif()
endforeach()
file(REMOVE_RECURSE ${WORK})
