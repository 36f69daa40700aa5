# Under ThreadSanitizer the engine's tests run with the suppressions for Qt's own libraries.
if(FOLIDOC_TSAN)
    foreach(src IN LISTS tests)
        get_filename_component(name ${src} NAME_WE)
        set_property(TEST ${name} APPEND PROPERTY ENVIRONMENT
            "TSAN_OPTIONS=suppressions=${CMAKE_CURRENT_SOURCE_DIR}/${dir}/tsan.supp")
    endforeach()
endif()
