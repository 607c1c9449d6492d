# The pages the window shows (resources/), copied beside the executable in the build tree,
# where the executable looks first. VELMORA_PAGE_FILES lists them for the install rules.
file(GLOB_RECURSE VELMORA_PAGE_FILES RELATIVE ${PROJECT_SOURCE_DIR}/resources CONFIGURE_DEPENDS
  ${PROJECT_SOURCE_DIR}/resources/*.html ${PROJECT_SOURCE_DIR}/resources/*.css
  ${PROJECT_SOURCE_DIR}/resources/*.js)
set(page_outputs)
foreach(page IN LISTS VELMORA_PAGE_FILES)
  add_custom_command(
    OUTPUT ${PROJECT_BINARY_DIR}/resources/${page}
    COMMAND ${CMAKE_COMMAND} -E copy_if_different ${PROJECT_SOURCE_DIR}/resources/${page}
      ${PROJECT_BINARY_DIR}/resources/${page}
    DEPENDS ${PROJECT_SOURCE_DIR}/resources/${page})
  list(APPEND page_outputs ${PROJECT_BINARY_DIR}/resources/${page})
endforeach()
add_custom_target(velmora_pages ALL DEPENDS ${page_outputs})
