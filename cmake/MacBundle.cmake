# The Mac application, "Velmora Heat Monitor.app": the Cocoa shell over the portable
# controller, with Info.plist, the pages, the cue sounds and the icon in Resources, signed ad
# hoc so that macOS keeps the Automation permission for System Events between builds.
# Included on macOS only (see src/app/cocoa/CMakeLists.txt).
if(NOT APPLE)
  message(FATAL_ERROR "MacBundle.cmake builds the macOS application bundle and needs macOS")
endif()

enable_language(OBJCXX)

# The oldest macOS the application runs on, for Info.plist (set in the top CMakeLists.txt).
set(VELMORA_MACOS_MINIMUM ${CMAKE_OSX_DEPLOYMENT_TARGET})
set(VELMORA_BUNDLE_NAME "Velmora Heat Monitor")

add_library(velmora_cocoa STATIC ${cocoa_apple_sources})
target_link_libraries(velmora_cocoa PUBLIC velmora_cocoa_rules velmora_app
  "-framework AppKit" "-framework WebKit" "-framework Foundation" "-framework CoreFoundation")
velmora_target(velmora_cocoa)
# ARC owns the AppKit objects. A system call that a newer SDK deprecates stays a warning: the
# build must not break with the next Xcode.
target_compile_options(velmora_cocoa PRIVATE
  $<$<COMPILE_LANGUAGE:OBJCXX>:-fobjc-arc> -Wno-error=deprecated-declarations)

# The cue sounds and the icon are made by the build from the project's own sources.
add_executable(velmora_mac_cue_sounds
  ${PROJECT_SOURCE_DIR}/src/actuators/cue_sounds/cue_waveforms.cpp
  ${PROJECT_SOURCE_DIR}/src/actuators/cue_sounds/make_cue_sounds.cpp
  ${PROJECT_SOURCE_DIR}/src/actuators/cue_sounds/wav_writer.cpp)
velmora_target(velmora_mac_cue_sounds)

set(generated ${CMAKE_CURRENT_BINARY_DIR}/bundle)
set(sounds_dir ${generated}/sounds)
add_custom_command(
  OUTPUT ${sounds_dir}/alarm.wav ${sounds_dir}/tick.wav
  COMMAND $<TARGET_FILE:velmora_mac_cue_sounds> ${sounds_dir}
  DEPENDS velmora_mac_cue_sounds
  COMMENT "Making the cue sounds")

set(iconset ${generated}/AppIcon.iconset)
set(icns ${generated}/AppIcon.icns)
add_custom_command(
  OUTPUT ${icns}
  COMMAND ${CMAKE_COMMAND} -E rm -rf ${iconset}
  COMMAND $<TARGET_FILE:velmora_make_app_icon> ${iconset}
  COMMAND iconutil --convert icns --output ${icns} ${iconset}
  DEPENDS velmora_make_app_icon
  COMMENT "Making the application icon")
set_source_files_properties(${icns} PROPERTIES MACOSX_PACKAGE_LOCATION Resources)

# The identifier and version are written in the template itself; the test suite checks them
# against the program's own constants.
configure_file(${PROJECT_SOURCE_DIR}/packaging/macos/Info.plist.in ${generated}/Info.plist @ONLY)

add_executable(velmora_mac_app MACOSX_BUNDLE ${PROJECT_SOURCE_DIR}/src/app/main/main.cpp ${icns})
target_link_libraries(velmora_mac_app PRIVATE velmora_cocoa)
velmora_target(velmora_mac_app)
set_target_properties(velmora_mac_app PROPERTIES
  OUTPUT_NAME ${VELMORA_BUNDLE_NAME}
  MACOSX_BUNDLE_INFO_PLIST ${generated}/Info.plist
  RUNTIME_OUTPUT_DIRECTORY ${PROJECT_BINARY_DIR})
add_custom_target(velmora_mac_sounds DEPENDS ${sounds_dir}/alarm.wav ${sounds_dir}/tick.wav)
add_dependencies(velmora_mac_app velmora_mac_sounds)

# Pages and sounds are copied on every build so that edits to them always reach the bundle;
# the signature comes last, over the finished bundle.
set(resources_dir $<TARGET_BUNDLE_CONTENT_DIR:velmora_mac_app>/Resources)
add_custom_command(TARGET velmora_mac_app POST_BUILD
  COMMAND ${CMAKE_COMMAND} -E copy_directory ${PROJECT_SOURCE_DIR}/resources ${resources_dir}
  COMMAND ${CMAKE_COMMAND} -E copy_directory ${sounds_dir} ${resources_dir}/sounds
  COMMAND codesign --force --sign - --timestamp=none $<TARGET_BUNDLE_DIR:velmora_mac_app>
  COMMENT "Copying the pages and sounds into the bundle and signing it ad hoc")
