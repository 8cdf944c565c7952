# Cross toolchain: Debian's mingw-w64 win32-threads compilers, linked against
# the Universal CRT through a specs file, runtime libraries linked statically.
set(CMAKE_SYSTEM_NAME Windows)
set(CMAKE_SYSTEM_PROCESSOR x86_64)

set(ZOR_TRIPLET x86_64-w64-mingw32)
set(CMAKE_C_COMPILER   ${ZOR_TRIPLET}-gcc-win32)
set(CMAKE_CXX_COMPILER ${ZOR_TRIPLET}-g++-win32)
set(CMAKE_RC_COMPILER  ${ZOR_TRIPLET}-windres)
set(CMAKE_MC_COMPILER  ${ZOR_TRIPLET}-windmc)

set(CMAKE_FIND_ROOT_PATH /usr/${ZOR_TRIPLET})
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY)

# The stock specs link msvcrt; swap it for ucrt once per build tree.
set(ZOR_UCRT_SPECS ${CMAKE_BINARY_DIR}/ucrt.specs)
if(NOT EXISTS ${ZOR_UCRT_SPECS})
  execute_process(COMMAND ${CMAKE_CXX_COMPILER} -dumpspecs
                  OUTPUT_VARIABLE _specs COMMAND_ERROR_IS_FATAL ANY)
  string(REPLACE "-lmsvcrt" "-lucrt" _specs "${_specs}")
  file(WRITE ${ZOR_UCRT_SPECS} "${_specs}")
endif()

set(CMAKE_C_FLAGS_INIT   "-specs=${ZOR_UCRT_SPECS}")
set(CMAKE_CXX_FLAGS_INIT "-specs=${ZOR_UCRT_SPECS}")
set(CMAKE_EXE_LINKER_FLAGS_INIT    "-specs=${ZOR_UCRT_SPECS} -static-libgcc -static-libstdc++")
set(CMAKE_SHARED_LINKER_FLAGS_INIT "-specs=${ZOR_UCRT_SPECS} -static-libgcc -static-libstdc++")
