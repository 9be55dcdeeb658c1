# The documents and desktop files that go with the programs: the licence and the user manual
# beside the executables (the manual typeset here from its HTML source by a small Qt tool),
# and, when installed, the desktop entry, the icon and the profile's MIME type.
include(GNUInstallDirs)
set(ZAV_RESOURCES ${CMAKE_CURRENT_LIST_DIR})
set(ZAV_BIN ${CMAKE_RUNTIME_OUTPUT_DIRECTORY})

add_executable(zav_make_manual ${ZAV_RESOURCES}/MakeManual.cpp)
target_link_libraries(zav_make_manual PRIVATE Qt6::Gui)

add_custom_command(OUTPUT ${ZAV_BIN}/ZAV.pdf
    COMMAND ${CMAKE_COMMAND} -E env QT_QPA_PLATFORM=offscreen
            $<TARGET_FILE:zav_make_manual> ${ZAV_RESOURCES}/manual.html ${ZAV_BIN}/ZAV.pdf
    DEPENDS zav_make_manual ${ZAV_RESOURCES}/manual.html
    COMMENT "Typesetting the user manual ZAV.pdf"
    VERBATIM)
set(ZAV_DOCUMENTS ${ZAV_BIN}/ZAV.pdf)
foreach(file licence.txt zav.svg)
    add_custom_command(OUTPUT ${ZAV_BIN}/${file}
        COMMAND ${CMAKE_COMMAND} -E copy_if_different ${ZAV_RESOURCES}/${file} ${ZAV_BIN}/${file}
        DEPENDS ${ZAV_RESOURCES}/${file}
        VERBATIM)
    list(APPEND ZAV_DOCUMENTS ${ZAV_BIN}/${file})
endforeach()
add_custom_target(zav_documents ALL DEPENDS ${ZAV_DOCUMENTS})

install(FILES ${ZAV_RESOURCES}/licence.txt ${ZAV_BIN}/ZAV.pdf
        DESTINATION ${CMAKE_INSTALL_DATADIR}/zav)
install(FILES ${ZAV_RESOURCES}/zav.desktop DESTINATION ${CMAKE_INSTALL_DATADIR}/applications)
install(FILES ${ZAV_RESOURCES}/zav.svg
        DESTINATION ${CMAKE_INSTALL_DATADIR}/icons/hicolor/scalable/apps)
install(FILES ${ZAV_RESOURCES}/zav-profile.xml DESTINATION ${CMAKE_INSTALL_DATADIR}/mime/packages
        RENAME zav.xml)
