# The compiler of what ships: clang and lld of version 16, with the headers, runtime and C++ library of the GCC cross
# toolchain beside it.
set(CMAKE_SYSTEM_NAME Windows)
set(CMAKE_SYSTEM_PROCESSOR x86_64)
set(CMAKE_C_COMPILER clang-16)
set(CMAKE_CXX_COMPILER clang++-16)
set(CMAKE_C_COMPILER_TARGET x86_64-w64-mingw32)
set(CMAKE_CXX_COMPILER_TARGET x86_64-w64-mingw32)
set(CMAKE_RC_COMPILER x86_64-w64-mingw32-windres)
set(CMAKE_AR x86_64-w64-mingw32-ar)
set(CMAKE_RANLIB x86_64-w64-mingw32-ranlib)
set(CMAKE_OBJCOPY x86_64-w64-mingw32-objcopy)
set(CMAKE_OBJDUMP x86_64-w64-mingw32-objdump)
set(CMAKE_CROSSCOMPILING_EMULATOR ${CMAKE_CURRENT_LIST_DIR}/../scripts/run-in-wine)

# Left alone, clang takes the newest GCC folder, which may be that of the other thread model.
foreach(name include/c++ libgcc.a)
  execute_process(
    COMMAND x86_64-w64-mingw32-g++-posix -print-file-name=${name}
    OUTPUT_VARIABLE found
    OUTPUT_STRIP_TRAILING_WHITESPACE COMMAND_ERROR_IS_FATAL ANY)
  list(APPEND gcc_paths ${found})
endforeach()
list(GET gcc_paths 0 gcc_headers)
list(GET gcc_paths 1 gcc_library)
get_filename_component(gcc_library_folder ${gcc_library} DIRECTORY)
set(CMAKE_CXX_FLAGS_INIT
    "-stdlib++-isystem ${gcc_headers} -stdlib++-isystem ${gcc_headers}/x86_64-w64-mingw32 -stdlib++-isystem ${gcc_headers}/backward"
)
foreach(kind EXE SHARED MODULE)
  set(CMAKE_${kind}_LINKER_FLAGS_INIT "-fuse-ld=lld-16 -L${gcc_library_folder} -lpthread")
endforeach()

set(CMAKE_FIND_ROOT_PATH /usr/x86_64-w64-mingw32)
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_PACKAGE ONLY)
