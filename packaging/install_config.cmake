# Runs at the installation. The configuration belongs under /etc for the prefix /usr, else under the
# prefix's own etc, and a link stands in for it beside the server. Which of them is decided by the
# prefix of the installation: "cmake --install --prefix" may name another one than the build's. Where
# CORVANE_CONFIG_DIR was set for the build, it is that directory. A configuration that is there already
# may have been edited and is kept.
if(CORVANE_CONFIG_DIR)
  set(config_dir "$ENV{DESTDIR}${CORVANE_CONFIG_DIR}")
  set(config_link "${CORVANE_CONFIG_DIR}/corvane.conf")
elseif(CMAKE_INSTALL_PREFIX STREQUAL "/usr")
  set(config_dir "$ENV{DESTDIR}/etc/corvane")
  set(config_link /etc/corvane/corvane.conf)
else()
  set(config_dir "$ENV{DESTDIR}${CMAKE_INSTALL_PREFIX}/etc/corvane")
  set(config_link ../../etc/corvane/corvane.conf)
endif()
set(private_dir "$ENV{DESTDIR}${CMAKE_INSTALL_PREFIX}/lib/corvane")

if(EXISTS "${config_dir}/corvane.conf")
  message(STATUS "Kept: ${config_dir}/corvane.conf")
else()
  message(STATUS "Installing: ${config_dir}/corvane.conf")
  file(COPY "${CMAKE_CURRENT_LIST_DIR}/corvane.conf" DESTINATION "${config_dir}"
    FILE_PERMISSIONS OWNER_READ OWNER_WRITE GROUP_READ WORLD_READ)
endif()
message(STATUS "Linking: ${private_dir}/corvane.conf")
file(MAKE_DIRECTORY "${private_dir}")
file(CREATE_LINK ${config_link} "${private_dir}/corvane.conf" SYMBOLIC)
