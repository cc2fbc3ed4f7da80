# The platform's headers take most of the compiler's time: every target below a folder shares one precompiled copy.
# Sources still include what they use; the preset windows-release-keeps-input builds without it and proves that.
option(TARN_PRECOMPILE "Share the platform's headers in precompiled form" OFF)

function(tarn_share_precompiled_headers)
  if(NOT TARN_PRECOMPILE OR NOT WIN32)
    return()
  endif()
  target_precompile_headers(
    tarn_base PRIVATE "${CMAKE_BINARY_DIR}/rooms/platform/platform/MediaFoundation.h" <atomic> <functional> <memory> <mutex> <string>
    <thread> <vector>)
  foreach(folder ${ARGN})
    string(REGEX REPLACE "^tests/" "" name ${folder})
    if(NOT EXISTS ${CMAKE_SOURCE_DIR}/${folder}/CMakeLists.txt OR (folder MATCHES "^tests/" AND NOT name IN_LIST
                                                                                                 TARN_TEST_FOLDERS))
      continue()
    endif()
    get_property(targets DIRECTORY ${CMAKE_SOURCE_DIR}/${folder} PROPERTY BUILDSYSTEM_TARGETS)
    foreach(target ${targets})
      get_target_property(type ${target} TYPE)
      get_target_property(sources ${target} SOURCES)
      get_target_property(definitions ${target} COMPILE_DEFINITIONS) # other macros, another precompiled copy
      if(type MATCHES "STATIC_LIBRARY|EXECUTABLE" AND NOT target MATCHES "^tarn_(base|checksum)$" AND NOT sources MATCHES "\\.c(;|$)" AND NOT definitions)
        target_precompile_headers(${target} REUSE_FROM tarn_base)
      endif()
    endforeach()
  endforeach()
endfunction()

# Sources of one folder that spend their time in the same headers and templates, compiled a few at a time. Not in what
# ships: the joined file includes them by their full paths, which would get into its symbols; so that tree also proves
# that each source stands alone.
option(TARN_JOIN "Compile the sources of a folder a few at a time" OFF)

function(tarn_join_sources)
  if(NOT TARN_JOIN)
    return()
  endif()
  foreach(target ${ARGN})
    if(TARGET ${target})
      set_target_properties(${target} PROPERTIES UNITY_BUILD ON UNITY_BUILD_BATCH_SIZE 6)
      # GCC takes what is included for a header, in which a class must not build on one of an unnamed namespace.
      target_compile_options(${target} PRIVATE $<$<CXX_COMPILER_ID:GNU>:-Wno-subobject-linkage>)
    endif()
  endforeach()
endfunction()
