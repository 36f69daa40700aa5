# The hand-made hostile files compress their bombs with zlib.
target_link_libraries(test_support_kit_engine PRIVATE z)
