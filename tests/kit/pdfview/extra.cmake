# The rendering test runs again at a fractional device pixel ratio.
if(TARGET PDFRenderingTest)
    add_test(NAME PDFRenderingTest_1_5 COMMAND PDFRenderingTest)
    set_tests_properties(PDFRenderingTest_1_5 PROPERTIES
        ENVIRONMENT "QT_QPA_PLATFORM=offscreen;FOLIDOC_TEST_TOOLS=1;FOLIDOC_TEST_SCALE=1.5"
        TIMEOUT 300 LABELS kit_pdfview)
endif()

# The primary selection exists only on a real display server: that test runs again under Xvfb.
find_program(FOLIDOC_XVFB_RUN xvfb-run)
if(TARGET PDFViewTest AND FOLIDOC_XVFB_RUN)
    add_test(NAME PDFViewTest_X11 COMMAND ${FOLIDOC_XVFB_RUN} -a $<TARGET_FILE:PDFViewTest>
        mouseAndKeysSelectText)
    set_tests_properties(PDFViewTest_X11 PROPERTIES
        ENVIRONMENT "QT_QPA_PLATFORM=xcb;FOLIDOC_TEST_TOOLS=1" TIMEOUT 120 LABELS kit_pdfview)
endif()
