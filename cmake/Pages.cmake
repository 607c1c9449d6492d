# The pages the window shows (resources/), copied beside the executable in the build tree,
# where the executable looks first. VELMORA_PAGE_FILES lists them for the install rules.
set(VELMORA_PAGE_FILES
  index.html
  expanded.html
  menubar.html
  stagec.html
  common/bridge.js
  common/cause.js
  common/dom.js
  common/heat.css
  common/home.js
  pages/expanded.css
  pages/expanded.js
  pages/history_graph.js
  pages/index.css
  pages/index.js
  pages/menubar.css
  pages/menubar.js
  pages/stagec.css
  pages/stagec.js)
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
