# The documents and the client libraries as they are installed. Their links lead through the sources;
# in an installation documents and libraries lie elsewhere, and some that only matter beside the
# sources are not there.
set(documents "${CMAKE_CURRENT_BINARY_DIR}/documents")
set(clients_dir "${CMAKE_INSTALL_DATADIR}/corvane/clients")
set(licence LICENSE)
if(CMAKE_INSTALL_PREFIX STREQUAL "/usr")  # Debian wants it in the file "copyright" alone
  set(licence copyright)
endif()

# copy_document(SOURCE TARGET): TARGET is a path below the directory of documents.
function(copy_document source target)
  set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS "${PROJECT_SOURCE_DIR}/${source}")
  file(READ "${PROJECT_SOURCE_DIR}/${source}" text)
  string(REGEX REPLACE "\\[([^]]*)\\]\\((\\.\\./examples[^)]*|CONTRIBUTING\\.md)\\)" "\\1" text "${text}")
  foreach(link
      "../../docs/=../../../doc/corvane/" "../clients/=../../corvane/clients/" "../README.md=README.md"
      "clients/=../../corvane/clients/" "docs/=" "packaging/corvane.conf=examples/corvane.conf"
      "CHANGELOG.md=changelog.gz" "LICENSE=${licence}")
    string(REPLACE "=" ";" link "${link}")
    list(GET link 0 from)
    list(GET link 1 to)
    string(REPLACE "](${from}" "](${to}" text "${text}")
  endforeach()
  file(WRITE "${documents}/${target}" "${text}")
endfunction()

copy_document(README.md doc/README.md)
file(GLOB pages RELATIVE "${PROJECT_SOURCE_DIR}" CONFIGURE_DEPENDS "${PROJECT_SOURCE_DIR}/docs/*.md")
foreach(page IN LISTS pages)
  string(REPLACE "docs/" "doc/" target "${page}")
  copy_document("${page}" "${target}")
endforeach()
foreach(client as3 haxe js)
  copy_document("clients/${client}/README.md" "clients/${client}/README.md")
  install(DIRECTORY "${PROJECT_SOURCE_DIR}/clients/${client}" DESTINATION "${clients_dir}"
    PATTERN README.md EXCLUDE PATTERN LICENSE EXCLUDE)
endforeach()
install(DIRECTORY "${documents}/doc/" DESTINATION "${CMAKE_INSTALL_DOCDIR}")
install(DIRECTORY "${documents}/clients/" DESTINATION "${clients_dir}")
install(DIRECTORY "${PROJECT_SOURCE_DIR}/docs/images" DESTINATION "${CMAKE_INSTALL_DOCDIR}"
  PATTERN "*.py" EXCLUDE)
if(licence STREQUAL "LICENSE")
  install(FILES "${PROJECT_SOURCE_DIR}/LICENSE" DESTINATION "${CMAKE_INSTALL_DOCDIR}")
  install(FILES "${PROJECT_SOURCE_DIR}/LICENSE" DESTINATION "${clients_dir}/js")  # of the package for npm
endif()
