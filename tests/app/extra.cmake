# The command-line test runs the real program.
if(TARGET CommandLineTest)
    target_compile_definitions(CommandLineTest PRIVATE
        FOLIDOC_PROGRAM="$<TARGET_FILE:folidoc>" FOLIDOC_VERSION="${PROJECT_VERSION}")
    add_dependencies(CommandLineTest folidoc)
endif()

# The translation test reads the .ts files of the source tree.
if(TARGET TranslationsTest)
    target_compile_definitions(TranslationsTest PRIVATE
        FOLIDOC_TRANSLATIONS_DIR="${PROJECT_SOURCE_DIR}/resources/translations")
endif()
