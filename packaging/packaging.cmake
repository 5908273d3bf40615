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
install(FILES packaging/ostrel-updater.bash-completion
    DESTINATION "${CMAKE_INSTALL_DATADIR}/bash-completion/completions"
    RENAME ostrel-updater)
install(PROGRAMS device/ostrel-job DESTINATION "${CMAKE_INSTALL_BINDIR}")
install(PROGRAMS device/run-job DESTINATION lib/ostrel-updater)
# Units are below /usr since Debian 13.
set(unitDirectory lib/systemd/system)
file(STRINGS /etc/os-release older REGEX "^VERSION_ID=\"1[0-2]\"")
if(older)
    set(unitDirectory /lib/systemd/system)
endif()
install(FILES device/ostrel-resume.service DESTINATION "${unitDirectory}")

# Both commands have one manual page and one completion.
function(install_link directory name target)
    set(link "${CMAKE_CURRENT_BINARY_DIR}/docs/${name}")
    execute_process(COMMAND "${CMAKE_COMMAND}" -E create_symlink "${target}" "${link}")
    install(FILES "${link}" DESTINATION "${directory}")
endfunction()
install_link("${CMAKE_INSTALL_MANDIR}/man8" ostrel-job.8.gz ostrel-updater.8.gz)
install_link("${CMAKE_INSTALL_DATADIR}/bash-completion/completions" ostrel-job ostrel-updater)

# The directories of the package would have the modes that the umask leaves. Only CPack installs
# below a directory of that name; an ordinary installation changes no mode.
install(CODE [[
    if("$ENV{DESTDIR}" MATCHES "/_CPack_Packages/")
        execute_process(COMMAND chmod -R u=rwX,go=rX "$ENV{DESTDIR}" RESULT_VARIABLE status)
        if(NOT status EQUAL 0)
            message(FATAL_ERROR "The modes of the package's directories cannot be set: ${status}")
        endif()
    endif()
]])

set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
set(CPACK_STRIP_FILES ON)
set(CPACK_PACKAGE_CONTACT "Ostrel Updater maintainers <maintainers@ostrel.example>")
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_SECTION admin)
# CMake before 3.16 copies it as it is; later versions indent all lines but the last once more.
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "${PROJECT_DESCRIPTION}
 Installs firmware updates; backs up, restores and removes the configuration.")
# The libraries are found from the executable; the programs that it runs are not.
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_PACKAGE_DEPENDS "systemd, unzip, zip")
set(CPACK_DEBIAN_PACKAGE_CONTROL_EXTRA
    "${PROJECT_SOURCE_DIR}/packaging/postinst" "${PROJECT_SOURCE_DIR}/packaging/postrm"
    "${PROJECT_SOURCE_DIR}/packaging/prerm")
set(CPACK_DEBIAN_PACKAGE_CONTROL_STRICT_PERMISSION ON)
include(CPack)
