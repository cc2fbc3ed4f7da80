# Run by CPack when every component is installed in a folder of its own below CPACK_TEMPORARY_DIRECTORY.
foreach(component ${CPACK_COMPONENTS_ALL})
  set(archive ${CPACK_PACKAGE_DIRECTORY}/tarn-${component}-${CPACK_PACKAGE_VERSION}-${CPACK_SYSTEM_NAME}.zip)
  execute_process(COMMAND ${CMAKE_CURRENT_LIST_DIR}/make-archive ${CPACK_TEMPORARY_DIRECTORY}/${component} ${archive}
                  COMMAND_ERROR_IS_FATAL ANY)
  list(APPEND CPACK_EXTERNAL_BUILT_PACKAGES ${archive})
endforeach()
