# What goes onto a device beside the executable, and the Debian package that brings all of it there.

install(FILES "${CMAKE_CURRENT_SOURCE_DIR}/docs/ostrel-updater.8"
    DESTINATION "${CMAKE_INSTALL_MANDIR}/man8")
install(FILES "${CMAKE_CURRENT_SOURCE_DIR}/app/ostrel-updater.bash-completion"
    DESTINATION "${CMAKE_INSTALL_DATADIR}/bash-completion/completions"
    RENAME ostrel-updater)

set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
set(CPACK_STRIP_FILES ON)
# A generous umask makes no directory of the package writable for others.
set(CPACK_INSTALL_DEFAULT_DIRECTORY_PERMISSIONS
    OWNER_READ OWNER_WRITE OWNER_EXECUTE GROUP_READ GROUP_EXECUTE WORLD_READ WORLD_EXECUTE)
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
