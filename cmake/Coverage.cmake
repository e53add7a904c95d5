# Target `coverage`: after ctest has run in a KDRCORE_COVERAGE build, collects the gcov data of
# the library's sources with lcov and prints the line and branch coverage of src/.
find_program(KDRCORE_LCOV lcov)
if(NOT KDRCORE_LCOV)
    message(STATUS "lcov not found (package lcov): no coverage target")
    return()
endif()
set(info ${PROJECT_BINARY_DIR}/coverage.info)
add_custom_target(coverage
    COMMAND ${KDRCORE_LCOV} --quiet --capture --rc lcov_branch_coverage=1
            --directory ${PROJECT_BINARY_DIR}/CMakeFiles/KDRCoreObjects.dir
            --base-directory ${PROJECT_SOURCE_DIR} --output-file ${info}.all
    COMMAND ${KDRCORE_LCOV} --quiet --rc lcov_branch_coverage=1 --extract ${info}.all
            "${PROJECT_SOURCE_DIR}/src/*" --output-file ${info}
    COMMAND ${KDRCORE_LCOV} --rc lcov_branch_coverage=1 --summary ${info}
    WORKING_DIRECTORY ${PROJECT_BINARY_DIR}
    COMMENT "Coverage of src/ (lcov)"
    VERBATIM)
