# The launcher's path as the files that start it have to spell it. A prefix may hold blanks, "%" and
# quotes; a plain path stays as it is.

# quote_launcher(PATH): sets CORVANE_LAUNCHER_SYSTEMD, _DESKTOP and _XML.
function(quote_launcher path)
  string(REPLACE "&" "&amp;" xml "${path}")
  string(REPLACE "<" "&lt;" xml "${xml}")
  set(CORVANE_LAUNCHER_XML "${xml}" PARENT_SCOPE)

  set(systemd "${path}")
  set(desktop "${path}")
  if(path MATCHES "[^A-Za-z0-9/._+-]")
    # systemd reads "%" itself, but no "$" in a program's name.
    string(REGEX REPLACE "([\\\\\"])" "\\\\\\1" systemd "${path}")
    string(REPLACE "%" "%%" systemd "${systemd}")
    set(systemd "\"${systemd}\"")
    # A desktop entry is read twice: as a string, in which a backslash is doubled, then as a command
    # line.
    string(REGEX REPLACE "([\\\\\"`$])" "\\\\\\1" desktop "${path}")
    string(REPLACE "\\" "\\\\" desktop "${desktop}")
    string(REPLACE "%" "%%" desktop "${desktop}")
    set(desktop "\"${desktop}\"")
  endif()
  set(CORVANE_LAUNCHER_SYSTEMD "${systemd}" PARENT_SCOPE)
  set(CORVANE_LAUNCHER_DESKTOP "${desktop}" PARENT_SCOPE)
endfunction()
