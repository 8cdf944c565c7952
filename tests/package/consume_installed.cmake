# Installs the build into a fresh prefix, builds the examples against it as a
# separate project through find_package, and through pkg-config, then runs
# them under the emulator and compares what they print.
# Arguments (-D): BUILD_DIR, SOURCE_DIR, WORK_DIR, TOOLCHAIN, EMULATOR, OBJDUMP,
# C_COMPILER.
cmake_minimum_required(VERSION 3.20)

# Standard error stays apart: a starting emulator may talk there.
function(run)
  execute_process(COMMAND ${ARGN} RESULT_VARIABLE code OUTPUT_VARIABLE out ERROR_VARIABLE err)
  if(NOT code EQUAL 0)
    message(FATAL_ERROR "failed (${code}): ${ARGN}\n${out}\n${err}")
  endif()
  set(out "${out}" PARENT_SCOPE)
endfunction()

function(expect_output program expected_file)
  run(${EMULATOR} ${program})
  string(REPLACE "\r\n" "\n" out "${out}")
  file(READ ${expected_file} expected)
  if(NOT out STREQUAL expected)
    message(FATAL_ERROR "${program} printed:\n${out}\nexpected:\n${expected}")
  endif()
endfunction()

set(prefix ${WORK_DIR}/prefix)
file(REMOVE_RECURSE ${WORK_DIR})
run(${CMAKE_COMMAND} --install ${BUILD_DIR} --prefix ${prefix})

# The installed DLL carries no debug sections, only the link to its twin.
run(${OBJDUMP} -h ${prefix}/bin/ZORBaseUx64.dll)
if(out MATCHES "\\.debug_" OR NOT out MATCHES "\\.gnu_debuglink")
  message(FATAL_ERROR "the installed DLL is not stripped or has no debug link:\n${out}")
endif()
run(${OBJDUMP} -h ${prefix}/bin/ZORBaseUx64.dll.debug)
if(NOT out MATCHES "\\.debug_info")
  message(FATAL_ERROR "the debug file holds no debug information")
endif()

run(${CMAKE_COMMAND} -S ${SOURCE_DIR}/examples -B ${WORK_DIR}/build -G Ninja
    -DCMAKE_TOOLCHAIN_FILE=${TOOLCHAIN} -DCMAKE_PREFIX_PATH=${prefix} -DCMAKE_BUILD_TYPE=Release)
run(${CMAKE_COMMAND} --build ${WORK_DIR}/build)
set(expected ${SOURCE_DIR}/tests/package/expected)
foreach(name strings_and_messages formula price_table)
  expect_output(${WORK_DIR}/build/${name}.exe ${expected}/${name}.txt)
endforeach()

# The same C example, compiled by hand with the flags pkg-config gives.
set(ENV{PKG_CONFIG_PATH} ${prefix}/lib/pkgconfig)
run(pkg-config --cflags --libs zorbase)
separate_arguments(flags UNIX_COMMAND "${out}")
set(by_hand ${WORK_DIR}/build/by_pkg_config.exe)
run(${C_COMPILER} ${SOURCE_DIR}/examples/strings_and_messages.c ${flags} -o ${by_hand})
expect_output(${by_hand} ${expected}/strings_and_messages.txt)
