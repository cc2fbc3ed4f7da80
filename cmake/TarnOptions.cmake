# What every target is compiled and linked with.
add_library(tarn_options INTERFACE)
target_compile_options(tarn_options INTERFACE -Wall -Wextra -Wpedantic -Wconversion -Wshadow -Werror
                                              -fstack-protector-strong)
if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU")
  # GCC 12 sees overlaps that are not there in std::string's operator+.
  target_compile_options(tarn_options INTERFACE -Wno-restrict)
else()
  target_compile_options(tarn_options INTERFACE -Wthread-safety)
endif()
target_compile_definitions(tarn_options INTERFACE $<$<CONFIG:Debug>:_GLIBCXX_ASSERTIONS>)

# The preset windows-debug has -Og: without any optimisation each inline function is three sections of its own, and this
# linker and archiver look sections up one after the other, which takes longer than compiling.
if(WIN32)
  target_compile_definitions(tarn_options INTERFACE UNICODE _UNICODE NOMINMAX WIN32_LEAN_AND_MEAN
                                                    __USE_MINGW_ANSI_STDIO=1)
  # winedbg prints file and line only from version 4 debug information. Variables and types are for what ships.
  target_compile_options(tarn_options INTERFACE -gdwarf-4 -g$<$<CONFIG:Debug>:1>)
  target_link_options(tarn_options INTERFACE -static -fstack-protector-strong -Wl,--dynamicbase -Wl,--nxcompat -Wl,--high-entropy-va)
endif()

# Undefined behaviour ends the process with an illegal instruction: there is no run-time library for it on this target.
# Enumerations are left out: callers across COM may pass any number, and this compiler gives each a meaning.
if(TARN_TRAP_UNDEFINED)
  target_compile_options(tarn_options INTERFACE -fsanitize=undefined -fno-sanitize=vptr,enum
                                                -fsanitize-undefined-trap-on-error)
endif()
if(TARN_SANITIZE)
  target_compile_options(tarn_options INTERFACE -fsanitize=address,undefined -fno-sanitize-recover=all
                                                -fno-omit-frame-pointer)
  target_link_options(tarn_options INTERFACE -fsanitize=address,undefined)
endif()
if(TARN_PROCESS_INPUT_KEEPS_REFERENCE)
  target_compile_definitions(tarn_options INTERFACE TARN_PROCESS_INPUT_KEEPS_REFERENCE=1)
endif()
