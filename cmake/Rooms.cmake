# Each folder shows its headers under its own name, and only to the targets that link its library: an include that goes
# against the order of the folders does not build.
#
#   tarn_room(TARGET)    # in the folder's own CMakeLists.txt
#
# The include directory is a folder of the build tree that holds one link, named as the source folder.
function(tarn_room target)
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
