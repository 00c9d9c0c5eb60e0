# Writes the CTest entries of one GoogleTest executable: one for each suite that it has when CTest runs, so that no
# test is forgotten, a crash takes one suite with it, and Python is started once a suite rather than once a test.
#   include()d with TEST_TARGET, TEST_EXECUTABLE, TEST_RESULTS, TEST_TIMEOUT and TEST_DIRECTORY set

if(NOT EXISTS "${TEST_EXECUTABLE}")
    add_test("${TEST_TARGET}.NOT_BUILT" "${TEST_EXECUTABLE}")
    return()
endif()

execute_process(COMMAND "${TEST_EXECUTABLE}" --gtest_list_tests
    OUTPUT_VARIABLE listing RESULT_VARIABLE status)
if(NOT status EQUAL 0)
    message(FATAL_ERROR "${TEST_EXECUTABLE} could not list its tests (${status}).")
endif()

# A suite is a line of its own that ends with a full stop, perhaps followed by a comment; its tests are indented.
string(REGEX MATCHALL "(^|\n)[^ \n][^\n]*\\.(\n|[ ]+#[^\n]*\n)" suites "${listing}")
foreach(suite IN LISTS suites)
    string(REGEX REPLACE "^\n?([^ \n]+)\\..*$" "\\1" suite "${suite}")
    string(REPLACE "/" "." name "${suite}")
    set(entry "${TEST_TARGET}.${name}")
    add_test("${entry}" "${TEST_EXECUTABLE}" "--gtest_filter=${suite}.*" "--gtest_output=xml:${TEST_RESULTS}/${entry}.xml")
    set_tests_properties("${entry}" PROPERTIES TIMEOUT "${TEST_TIMEOUT}" WORKING_DIRECTORY "${TEST_DIRECTORY}")
endforeach()
