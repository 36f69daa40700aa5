# The command-line test runs the real program.
if(TARGET CommandLineTest)
    target_compile_definitions(CommandLineTest PRIVATE
        FOLIDOC_PROGRAM="$<TARGET_FILE:folidoc>" FOLIDOC_VERSION="${PROJECT_VERSION}")
    add_dependencies(CommandLineTest folidoc)
endif()
