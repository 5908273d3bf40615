# What goes onto a device beside the executable, and the Debian package that brings all of it there.

# The newest entry of the changelog dates the manual.
file(STRINGS docs/changelog trailers REGEX "^ -- .*>  ")
list(GET trailers 0 trailer)
string(REGEX REPLACE ".*>  " "" DATE "${trailer}")
execute_process(COMMAND date --utc "--date=${DATE}" +%F
    OUTPUT_VARIABLE DATE OUTPUT_STRIP_TRAILING_WHITESPACE)

# Copies, so that a change of either configures again.
configure_file(docs/changelog docs/changelog COPYONLY)
configure_file(docs/ostrel-updater.8 docs/ostrel-updater.8 @ONLY)
foreach(document IN ITEMS changelog ostrel-updater.8)
    add_custom_command(OUTPUT "docs/${document}.gz"
        COMMAND gzip -9nc "docs/${document}" > "docs/${document}.gz"
        DEPENDS "${CMAKE_CURRENT_BINARY_DIR}/docs/${document}" VERBATIM)
endforeach()
add_custom_target(documents ALL DEPENDS docs/changelog.gz docs/ostrel-updater.8.gz)

install(FILES "${CMAKE_CURRENT_BINARY_DIR}/docs/ostrel-updater.8.gz"
    DESTINATION "${CMAKE_INSTALL_MANDIR}/man8")
install(FILES "${CMAKE_CURRENT_BINARY_DIR}/docs/changelog.gz" docs/copyright
    DESTINATION "${CMAKE_INSTALL_DOCDIR}")
install(FILES app/ostrel-updater.bash-completion
    DESTINATION "${CMAKE_INSTALL_DATADIR}/bash-completion/completions"
    RENAME ostrel-updater)

set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
set(CPACK_STRIP_FILES ON)
# The directories' modes would be those of the umask.
file(WRITE "${CMAKE_CURRENT_BINARY_DIR}/package-modes.cmake"
    "execute_process(COMMAND chmod -R u=rwX,go=rX \"\${CPACK_TEMPORARY_INSTALL_DIRECTORY}\")\n")
set(CPACK_PRE_BUILD_SCRIPTS "${CMAKE_CURRENT_BINARY_DIR}/package-modes.cmake")
set(CPACK_PACKAGE_CONTACT "Ostrel Updater maintainers <maintainers@ostrel.example>")
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "${PROJECT_DESCRIPTION}")
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_SECTION admin)
set(CPACK_DEBIAN_PACKAGE_DESCRIPTION
    "Installs firmware updates, and backs up, restores and removes the configuration
of the device's application; it stops the application's services meanwhile.")
# The libraries are found from the executable; the programs that it runs are not.
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_PACKAGE_DEPENDS "systemd, unzip, zip")
include(CPack)
