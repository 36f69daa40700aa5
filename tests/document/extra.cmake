# A helper process for the document tests: attribute name limits, and a writer that
# saves in a loop so that a test can kill it in the middle of a save.
add_executable(document_helper ${CMAKE_CURRENT_SOURCE_DIR}/document/tools/DocumentHelper.cpp)
target_compile_options(document_helper PRIVATE ${FOLIDOC_WARNINGS})
target_link_libraries(document_helper PRIVATE folidoc_app)
foreach(src IN LISTS tests)
    get_filename_component(name ${src} NAME_WE)
    target_compile_definitions(${name} PRIVATE
        FOLIDOC_DOCUMENT_HELPER="$<TARGET_FILE:document_helper>")
    add_dependencies(${name} document_helper)
endforeach()

# Preloaded into the helper to make the disk fill up, or the process die, at a chosen write.
add_library(disk_fault_interposer SHARED ${CMAKE_CURRENT_SOURCE_DIR}/document/tools/DiskFaultInterposer.cpp)
target_compile_options(disk_fault_interposer PRIVATE ${FOLIDOC_WARNINGS})
target_link_libraries(disk_fault_interposer PRIVATE ${CMAKE_DL_LIBS})
target_compile_definitions(SaveCrashTest PRIVATE
    FOLIDOC_DISK_FAULT_INTERPOSER="$<TARGET_FILE:disk_fault_interposer>")
add_dependencies(SaveCrashTest disk_fault_interposer)
