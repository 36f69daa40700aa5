# The rendering test runs again at a fractional device pixel ratio.
if(TARGET PDFRenderingTest)
    add_test(NAME PDFRenderingTest_1_5 COMMAND PDFRenderingTest)
    set_tests_properties(PDFRenderingTest_1_5 PROPERTIES
        ENVIRONMENT "QT_QPA_PLATFORM=offscreen;FOLIDOC_TEST_TOOLS=1;FOLIDOC_TEST_SCALE=1.5"
        TIMEOUT 300 LABELS kit_pdfview)
endif()
