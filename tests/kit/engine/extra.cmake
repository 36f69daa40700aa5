# Under ThreadSanitizer the engine's tests run with the suppressions for Qt's own libraries, and
# may start checking tools (qpdf) after their worker threads exist.
if(FOLIDOC_TSAN)
    foreach(src IN LISTS tests)
        get_filename_component(name ${src} NAME_WE)
        set_property(TEST ${name} APPEND PROPERTY ENVIRONMENT
            "TSAN_OPTIONS=suppressions=${CMAKE_CURRENT_SOURCE_DIR}/${dir}/tsan.supp:die_after_fork=0")
    endforeach()
endif()
# The hand-made hostile files compress their bombs with zlib.
target_link_libraries(test_support_kit_engine PRIVATE z)
