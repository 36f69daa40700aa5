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

# The icon as PNG in the hicolor sizes, rendered from the SVG at build time with Qt's own SVG
# renderer.
add_executable(folidoc-render-icons ${PROJECT_SOURCE_DIR}/tools/RenderIcons.cpp)
target_compile_options(folidoc-render-icons PRIVATE ${FOLIDOC_WARNINGS})
target_link_libraries(folidoc-render-icons PRIVATE Qt6::Gui Qt6::Svg)
set(FOLIDOC_ICON_SIZES 16 22 24 32 48 64 128 256 512)
set(folidoc_icon_dir ${CMAKE_BINARY_DIR}/icons)
set(folidoc_icon_pngs)
foreach(size IN LISTS FOLIDOC_ICON_SIZES)
    list(APPEND folidoc_icon_pngs ${folidoc_icon_dir}/${size}x${size}/apps/org.folidoc.Folidoc.png)
endforeach()
add_custom_command(OUTPUT ${folidoc_icon_pngs}
    COMMAND ${CMAKE_COMMAND} -E env QT_QPA_PLATFORM=offscreen
        $<TARGET_FILE:folidoc-render-icons> ${PROJECT_SOURCE_DIR}/resources/folidoc.svg
        ${folidoc_icon_dir} ${FOLIDOC_ICON_SIZES}
    DEPENDS folidoc-render-icons ${PROJECT_SOURCE_DIR}/resources/folidoc.svg
    COMMENT "Rendering the icon in the hicolor sizes")
add_custom_target(folidoc_icons ALL DEPENDS ${folidoc_icon_pngs})
install(DIRECTORY ${folidoc_icon_dir}/ DESTINATION ${CMAKE_INSTALL_DATADIR}/icons/hicolor)
