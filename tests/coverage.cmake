# Counts the lines that run, of the program's libraries and the console, not of tests, which so are compiled as
# always. Given to cmake by tests/coverage.sh as CMAKE_PROJECT_INCLUDE.
function(count_lines)
  foreach(target base core eval egdb book search records control dxp tools shell tessarin-cli)
    # Not -O3, which copies lines; instrumentation makes g++ warn of texts that it takes to be cut.
    target_compile_options(${target} PRIVATE --coverage -fprofile-update=atomic -O2 -w)
    target_link_options(${target} PUBLIC --coverage)
  endforeach()
endfunction()
cmake_language(DEFER DIRECTORY "${CMAKE_SOURCE_DIR}" CALL count_lines)
