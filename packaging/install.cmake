# What is installed where, and the Debian package made of it (cpack in the build folder).

set(ZELKOR_DATA ${CMAKE_INSTALL_DATADIR}/zelkor)

# The build tree is self-contained: the program finds its data beside itself.
file(MAKE_DIRECTORY ${CMAKE_RUNTIME_OUTPUT_DIRECTORY})
foreach(folder config Samples docs)
  file(CREATE_LINK ${CMAKE_SOURCE_DIR}/${folder} ${CMAKE_RUNTIME_OUTPUT_DIRECTORY}/${folder} SYMBOLIC)
endforeach()

install(TARGETS zelkor RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR})
install(DIRECTORY ${CMAKE_SOURCE_DIR}/config ${CMAKE_SOURCE_DIR}/Samples DESTINATION ${ZELKOR_DATA})
install(DIRECTORY ${CMAKE_SOURCE_DIR}/docs DESTINATION ${ZELKOR_DATA}
        FILES_MATCHING PATTERN "*.md" PATTERN "*.png" PATTERN "architecture.md" EXCLUDE)
install(FILES ${CMAKE_SOURCE_DIR}/packaging/zelkor.desktop DESTINATION ${CMAKE_INSTALL_DATADIR}/applications)
install(FILES ${CMAKE_SOURCE_DIR}/packaging/zelkor.metainfo.xml DESTINATION ${CMAKE_INSTALL_DATADIR}/metainfo)
install(FILES ${CMAKE_SOURCE_DIR}/packaging/zelkor-mime.xml DESTINATION ${CMAKE_INSTALL_DATADIR}/mime/packages
        RENAME zelkor.xml)
install(FILES ${CMAKE_SOURCE_DIR}/app/icons/zelkor.svg DESTINATION ${CMAKE_INSTALL_DATADIR}/icons/hicolor/scalable/apps)

# Manual page and change log are kept compressed, without a time stamp so that two builds are alike.
function(install_compressed from to destination)
  set(packed ${CMAKE_BINARY_DIR}/${to})
  add_custom_command(OUTPUT ${packed} DEPENDS ${from}
    COMMAND sh -c "gzip -9n < '${from}' > '${packed}'" VERBATIM)
  add_custom_target(pack_${to} ALL DEPENDS ${packed})
  install(FILES ${packed} DESTINATION ${destination})
endfunction()
if(UNIX)
  install_compressed(${CMAKE_SOURCE_DIR}/docs/zelkor.1 zelkor.1.gz ${CMAKE_INSTALL_MANDIR}/man1)
  install_compressed(${CMAKE_SOURCE_DIR}/packaging/changelog changelog.gz ${CMAKE_INSTALL_DATADIR}/doc/zelkor)
  install(FILES ${CMAKE_SOURCE_DIR}/packaging/copyright DESTINATION ${CMAKE_INSTALL_DATADIR}/doc/zelkor)
endif()

set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_NAME zelkor)
set(CPACK_PACKAGE_VENDOR "Zelkor Editor developers")
set(CPACK_PACKAGE_CONTACT "Zelkor Editor developers <developers@zelkor.invalid>")
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "text editor for hardware and software engineers")
set(CPACK_PACKAGE_DESCRIPTION
"Zelkor Editor edits many source files at once: hardware description,
programmable logic, constraints, tool scripts and program languages. Languages
are defined in a dialog: colours, templates, word lists cycled by a key, macros
in a small command language. It opens files of any size, keeps every byte that
was not edited, and saves so that neither a full disk nor a power cut costs the
old text.")
set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
set(CPACK_STRIP_FILES ON)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_SECTION editors)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_PACKAGE_RECOMMENDS "fonts-dejavu-core, qt6-wayland")
set(CPACK_DEBIAN_PACKAGE_GENERATE_SHLIBS OFF)
set(CPACK_INSTALL_DEFAULT_DIRECTORY_PERMISSIONS
    OWNER_READ OWNER_WRITE OWNER_EXECUTE GROUP_READ GROUP_EXECUTE WORLD_READ WORLD_EXECUTE)
include(CPack)
