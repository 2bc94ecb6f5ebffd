# The packages: cpack -G DEB for a build with the prefix /usr, cpack -G TGZ for any other.
set(CPACK_PACKAGE_NAME corvane)
set(CPACK_PACKAGE_VENDOR "Corvane maintainers")
set(CPACK_PACKAGE_CONTACT "Corvane maintainers <maintainers@corvane.example>")
set(CPACK_PACKAGE_VERSION "${PROJECT_VERSION}")
# Each package has a summary of its own.
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "")
set(CPACK_PACKAGE_DESCRIPTION
"Gives a Flash application in a local player access to files, directories,
programs, documents and the player's own window. The application connects to
the loopback address and sends text requests; each gets one XML reply.
.
The package contains the server, the command-line client corvanectl and a
service for the user's session. Nothing is started by the installation.")
# The first line of each is the summary.
set(CPACK_DEBIAN_CORVANE_DESCRIPTION
  "local command server for Flash applications\n${CPACK_PACKAGE_DESCRIPTION}")
set(CPACK_DEBIAN_PLAY_DESCRIPTION
"plays Flash applications in a browser, with Corvane under them
Plays a Flash application in a browser, where the plug-in is gone: one
command serves the movie and a page with Ruffle, connects the page with a
Corvane server, and shows it in a browser, in full screen on request.
.
Ruffle is part of the package. A browser with WebAssembly is needed.")
set(CPACK_COMPONENTS_ALL corvane play)
set(CPACK_STRIP_FILES ON)
set(CPACK_PACKAGE_FILE_NAME "corvane-${PROJECT_VERSION}-${CMAKE_SYSTEM_NAME}-${CMAKE_SYSTEM_PROCESSOR}")
set(CPACK_PRE_BUILD_SCRIPTS "${CMAKE_CURRENT_SOURCE_DIR}/fix_times.cmake")

set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_DEBIAN_CORVANE_PACKAGE_NAME corvane)
set(CPACK_DEBIAN_PLAY_PACKAGE_NAME corvane-play)
set(CPACK_DEBIAN_PACKAGE_RELEASE 1)
set(CPACK_DEBIAN_PACKAGE_SECTION net)
set(CPACK_DEBIAN_PACKAGE_PRIORITY optional)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
# The opener for documents and addresses; without it only the command "execute" misses something.
set(CPACK_DEBIAN_CORVANE_PACKAGE_RECOMMENDS xdg-utils)
# The two share nothing but the port, so that any version of the other one will do.
set(CPACK_DEBIAN_PLAY_PACKAGE_DEPENDS corvane)
set(CPACK_DEBIAN_PLAY_PACKAGE_RECOMMENDS "chromium | firefox-esr | www-browser, xdg-utils")
set(CPACK_DEBIAN_COMPRESSION_TYPE xz)
set(CPACK_DEBIAN_PACKAGE_CONTROL_STRICT_PERMISSION ON)
set(CPACK_DEBIAN_CORVANE_PACKAGE_CONTROL_EXTRA
  "${CMAKE_CURRENT_SOURCE_DIR}/deb/conffiles" "${CMAKE_CURRENT_SOURCE_DIR}/deb/postinst")

if(CMAKE_INSTALL_PREFIX STREQUAL "/usr")
  set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
  string(TIMESTAMP CORVANE_DATE "%a, %d %b %Y %H:%M:%S +0000" UTC)  # honours SOURCE_DATE_EPOCH
  configure_file(deb/changelog.in changelog.Debian @ONLY)
  gzip_to("${CMAKE_CURRENT_BINARY_DIR}/changelog.Debian" changelog.Debian)
  install(FILES "${CMAKE_CURRENT_BINARY_DIR}/changelog.Debian.gz" deb/copyright
    DESTINATION share/doc/corvane)
  install(FILES sysctl/corvane.conf DESTINATION lib/sysctl.d RENAME 50-corvane.conf)
  install(FILES deb/lintian-overrides DESTINATION share/lintian/overrides RENAME corvane)

  file(READ "${CMAKE_CURRENT_BINARY_DIR}/changelog.Debian" changes)
  string(REGEX REPLACE "^corvane " "corvane-play " changes "${changes}")
  file(CONFIGURE OUTPUT play/changelog.Debian CONTENT "${changes}" @ONLY)
  gzip_to("${CMAKE_CURRENT_BINARY_DIR}/play/changelog.Debian" play/changelog.Debian)
  install(FILES "${CMAKE_CURRENT_BINARY_DIR}/play/changelog.Debian.gz"
    DESTINATION share/doc/corvane-play COMPONENT play)
  install(FILES deb/play-copyright DESTINATION share/doc/corvane-play RENAME copyright
    COMPONENT play)
  install(FILES deb/play-lintian-overrides DESTINATION share/lintian/overrides
    RENAME corvane-play COMPONENT play)
endif()

include(CPack)
