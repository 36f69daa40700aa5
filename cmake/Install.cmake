# What `cmake --install` puts under the prefix: the program, its kit libraries in a folder of
# their own (found through the run path), and the desktop entry, icon and AppStream data that make
# Folidoc appear in menus and in the file manager's "Open With" for PDFs.
include(GNUInstallDirs)

set(FOLIDOC_KIT_LIBRARIES kit_base kit_engine kit_pdfview kit_tabs)
set(folidoc_libdir ${CMAKE_INSTALL_LIBDIR}/folidoc)
set_target_properties(folidoc PROPERTIES INSTALL_RPATH "$ORIGIN/../${folidoc_libdir}")
set_target_properties(${FOLIDOC_KIT_LIBRARIES} PROPERTIES INSTALL_RPATH "$ORIGIN")

install(TARGETS folidoc RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR})
install(TARGETS ${FOLIDOC_KIT_LIBRARIES} LIBRARY DESTINATION ${folidoc_libdir})
install(FILES ${PROJECT_SOURCE_DIR}/resources/org.folidoc.Folidoc.desktop
    DESTINATION ${CMAKE_INSTALL_DATADIR}/applications)
install(FILES ${PROJECT_SOURCE_DIR}/resources/folidoc.svg
    DESTINATION ${CMAKE_INSTALL_DATADIR}/icons/hicolor/scalable/apps
    RENAME org.folidoc.Folidoc.svg)
install(FILES ${PROJECT_SOURCE_DIR}/resources/org.folidoc.Folidoc.metainfo.xml
    DESTINATION ${CMAKE_INSTALL_DATADIR}/metainfo)
