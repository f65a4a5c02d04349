# The first step of an installation: notes in `lumo_lines` what stands there now and has to stay noted. These are the
# lines of an installation that is replaced, and the folders that this one is going to make.
set(lumo_prefix "${CMAKE_INSTALL_PREFIX}")
set(lumo_lines)
if(EXISTS "$ENV{DESTDIR}${lumo_prefix}/lib/lumobrowser/installed")
  file(STRINGS "$ENV{DESTDIR}${lumo_prefix}/lib/lumobrowser/installed" lumo_lines)
endif()
foreach(folder
    bin
    lib/lumobrowser/LumoBrowser.app/Resources
    lib/systemd/system
    lib/systemd/user
    share/applications
    share/bash-completion/completions
    share/dbus-1/services
    share/icons/hicolor/48x48/apps
    share/icons/hicolor/128x128/apps
    share/icons/hicolor/256x256/apps
    share/icons/hicolor/scalable/apps
    share/lumobrowser/gtk-4.0
    share/man/man1
    share/metainfo
    share/wayland-sessions
    share/xsessions)
  set(folder "${lumo_prefix}/${folder}")
  while(NOT folder STREQUAL "/" AND NOT folder STREQUAL "" AND NOT IS_DIRECTORY "$ENV{DESTDIR}${folder}")
    list(APPEND lumo_lines "folder ${folder}")
    get_filename_component(folder "${folder}" DIRECTORY)
  endwhile()
endforeach()
