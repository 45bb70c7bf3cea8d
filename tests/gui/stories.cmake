# Stories with the whole program on a screen of their own, one at a time.
add_executable(gui_stories_tests stories_main.cpp stories_screen.cpp stories_program.cpp stories_board.cpp
                                 stories_menu.cpp story_steps.cpp story_play_test.cpp
                                 story_album_test.cpp story_files_test.cpp story_windows_test.cpp
                                 story_network_test.cpp story_dialogs_test.cpp ../dxp/scripted_peer.cpp ../dxp/scripted_player.cpp)
target_link_libraries(gui_stories_tests PRIVATE shell_qt GTest::gtest)
if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU")
  target_compile_options(gui_stories_tests PRIVATE -Wno-restrict) # as in tessarin_test
endif()
target_compile_definitions(gui_stories_tests PRIVATE TESSARIN_PROGRAM="$<TARGET_FILE:tessarin>")
add_dependencies(gui_stories_tests tessarin data)
# The environment tells the leak sanitizer, where the tests are built with it.
gtest_discover_tests(gui_stories_tests DISCOVERY_TIMEOUT 60 PROPERTIES TIMEOUT 600 RESOURCE_LOCK stories
                     ENVIRONMENT "LSAN_OPTIONS=suppressions=${CMAKE_CURRENT_SOURCE_DIR}/leaks.txt:print_suppressions=0")
