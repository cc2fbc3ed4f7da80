# Header-only libraries of the build machine for the cross compiler. /usr/include itself would bring in this machine's
# C library, so the needed folders alone are made visible, as system headers, in the build tree.
include_guard(GLOBAL)

set(staged_headers ${CMAKE_BINARY_DIR}/staged-headers)
file(MAKE_DIRECTORY ${staged_headers})
foreach(folder CLI nlohmann stb)
  if(NOT EXISTS /usr/include/${folder})
    message(FATAL_ERROR "/usr/include/${folder} is missing; run scripts/setup")
  endif()
  file(CREATE_LINK /usr/include/${folder} ${staged_headers}/${folder} SYMBOLIC)
endforeach()

add_library(tarn_tool_headers INTERFACE)
target_include_directories(tarn_tool_headers SYSTEM INTERFACE ${staged_headers})
