# Each folder shows its headers under its own name, and only to the targets that link its library: an include that goes
# against the order of the folders does not build.
#
#   tarn_room(TARGET)    # in the folder's own CMakeLists.txt
#
# The include directory is a folder of the build tree that holds one link, named as the source folder.
#
# With TARN_CHECK_HEADERS the target tarn_headers compiles every header of every room alone; headers named behind EXCEPT
# are parts of sources and left out.
option(TARN_CHECK_HEADERS "Compile every header alone" OFF)
if(TARN_CHECK_HEADERS)
  add_custom_target(tarn_headers)
endif()

function(tarn_check_headers target folder)
  file(GLOB_RECURSE headers RELATIVE ${CMAKE_CURRENT_SOURCE_DIR} *.h)
  if(ARGN)
    list(REMOVE_ITEM headers ${ARGN})
  endif()
  set(sources "")
  foreach(header ${headers})
    set(source ${CMAKE_BINARY_DIR}/headers/${folder}/${header}.cpp)
    file(CONFIGURE OUTPUT ${source} CONTENT "#include \"${folder}/${header}\"\n")
    list(APPEND sources ${source})
  endforeach()
  if(NOT sources)
    return()
  endif()
  add_library(${target}_headers OBJECT EXCLUDE_FROM_ALL ${sources})
  target_link_libraries(${target}_headers PRIVATE ${target})
  add_dependencies(tarn_headers ${target}_headers)
endfunction()

# Shows the headers of this folder to the target's users.
function(tarn_show_room target)
  file(RELATIVE_PATH folder ${CMAKE_SOURCE_DIR} ${CMAKE_CURRENT_SOURCE_DIR})
  string(REPLACE "/" "." room ${folder})
  set(link ${CMAKE_BINARY_DIR}/rooms/${room}/${folder})
  get_filename_component(parent ${link} DIRECTORY)
  file(MAKE_DIRECTORY ${parent})
  file(CREATE_LINK ${CMAKE_CURRENT_SOURCE_DIR} ${link} SYMBOLIC)

  get_target_property(type ${target} TYPE)
  if(type STREQUAL "INTERFACE_LIBRARY")
    target_include_directories(${target} INTERFACE ${CMAKE_BINARY_DIR}/rooms/${room})
  else()
    target_include_directories(${target} PUBLIC ${CMAKE_BINARY_DIR}/rooms/${room})
  endif()
endfunction()

function(tarn_room target)
  cmake_parse_arguments(arg "" "" "EXCEPT" ${ARGN})
  tarn_show_room(${target})
  if(TARN_CHECK_HEADERS)
    file(RELATIVE_PATH folder ${CMAKE_SOURCE_DIR} ${CMAKE_CURRENT_SOURCE_DIR})
    tarn_check_headers(${target} ${folder} ${arg_EXCEPT})
  endif()
endfunction()
