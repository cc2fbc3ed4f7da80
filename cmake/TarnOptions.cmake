# What every target is compiled and linked with.
add_library(tarn_options INTERFACE)
target_compile_options(tarn_options INTERFACE -Wall -Wextra -Wpedantic -Wconversion -Wshadow -Werror
                                              -fstack-protector-strong)
if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU")
  # GCC 12 sees overlaps that are not there in std::string's operator+.
  target_compile_options(tarn_options INTERFACE -Wno-restrict)
else()
  # The platform's macros for GUIDs leave the inner braces out.
  target_compile_options(tarn_options INTERFACE -Wthread-safety -Wno-missing-braces)
endif()
target_compile_definitions(tarn_options INTERFACE $<$<CONFIG:Debug>:_GLIBCXX_ASSERTIONS>)

# The preset windows-debug has -Og: without any optimisation each inline function is three sections of its own, and this
# linker and archiver look sections up one after the other, which takes longer than compiling.
if(WIN32)
  target_compile_definitions(tarn_options INTERFACE UNICODE _UNICODE NOMINMAX WIN32_LEAN_AND_MEAN
                                                    __USE_MINGW_ANSI_STDIO=1)
  target_link_options(tarn_options INTERFACE -static -fstack-protector-strong -Wl,--dynamicbase -Wl,--nxcompat -Wl,--high-entropy-va)
endif()
if(WIN32 AND CMAKE_CXX_COMPILER_ID STREQUAL "GNU")
  # winedbg prints file and line only from version 4 debug information. Variables and types are for what ships.
  target_compile_options(tarn_options INTERFACE -gdwarf-4 -g$<$<CONFIG:Debug>:1>)
elseif(WIN32)
  # What ships: symbols in a PDB beside the image, which names it without a folder. The same sources give the same bytes
  # wherever they lie, with a hash of the image as its time stamp.
  foreach(language C CXX)
    set(CMAKE_${language}_COMPILER_LAUNCHER ${CMAKE_SOURCE_DIR}/cmake/with-relative-paths ${CMAKE_SOURCE_DIR} ${CMAKE_BINARY_DIR})
  endforeach()
  target_compile_options(tarn_options INTERFACE -g -gcodeview -gno-codeview-command-line)
  target_link_options(
    tarn_options INTERFACE -Wl,--pdb= -Wl,-Xlink=-pdbaltpath:%_PDB% -Wl,-Xlink=-pdbsourcepath:/tarn -Wl,-Xlink=-Brepro)
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

# What ships carries no debug information: ours is in the PDB beside it, which leaves that of the run-time's objects. The time
# stamp stays: symbol stores file the image under it.
function(tarn_strip target)
  if(CMAKE_CXX_COMPILER_ID STREQUAL "Clang" AND CMAKE_BUILD_TYPE STREQUAL "Release")
    add_custom_command(
      TARGET ${target}
      POST_BUILD
      COMMAND ${CMAKE_OBJCOPY} --preserve-dates --strip-debug --strip-unneeded $<TARGET_FILE:${target}>
      VERBATIM)
  endif()
endfunction()
