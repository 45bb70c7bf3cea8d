# The icon for the desktop's menus: the drawing itself and, where it can be rendered, pictures for desktops that
# want them.
set(icon ${CMAKE_SOURCE_DIR}/data/art/tessarin.svg)
install(FILES ${icon} DESTINATION share/icons/hicolor/scalable/apps)

find_program(RSVG_CONVERT rsvg-convert)
if(RSVG_CONVERT)
  set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS ${icon})
  foreach(size 48 128)
    set(picture ${CMAKE_CURRENT_BINARY_DIR}/icons/${size}/tessarin.png)
    file(MAKE_DIRECTORY ${CMAKE_CURRENT_BINARY_DIR}/icons/${size})
    execute_process(COMMAND ${RSVG_CONVERT} --width ${size} --height ${size} --output ${picture} ${icon}
                    COMMAND_ERROR_IS_FATAL ANY)
    install(FILES ${picture} DESTINATION share/icons/hicolor/${size}x${size}/apps)
  endforeach()
endif()
