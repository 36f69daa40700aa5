# WorkspaceTest plays the file manager on a private session bus.
if(TARGET WorkspaceTest)
    target_link_libraries(WorkspaceTest PRIVATE Qt6::DBus)
endif()
