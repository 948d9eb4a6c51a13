# Installs the files that name the folders of the programs and of their data, with the real folders
# in the place of /usr/libexec/sign-cgi and /usr/share/sign-cgi.

foreach(folder IN ITEMS programs data documents)
    cmake_path(ABSOLUTE_PATH ${folder} BASE_DIRECTORY "${CMAKE_INSTALL_PREFIX}")
endforeach()

# A macro, so that file(INSTALL) can note what it installs in CMAKE_INSTALL_MANIFEST_FILES. Installs
# ${source}/FILE at ${place}, as a FILE or a PROGRAM.
macro(install_placed file type)
    file(READ "${source}/${file}" text)
    string(REPLACE /usr/libexec/sign-cgi "${programs}" text "${text}")
    string(REPLACE /usr/share/sign-cgi "${data}" text "${text}")
    cmake_path(GET place PARENT_PATH folder)
    cmake_path(GET place FILENAME name)
    file(WRITE "${work}/${name}" "${text}")
    file(INSTALL "${work}/${name}" DESTINATION "${folder}" TYPE ${type})
endmacro()

set(place "${programs}/check-service.sh")
install_placed(scripts/check-service.sh PROGRAM)

# Under the prefix /usr, which is Debian's, the configurations of Apache and lighttpd go where these
# servers look for what can be enabled. All others are examples.
file(GLOB_RECURSE configurations RELATIVE "${source}/deploy"
    "${source}/deploy/*.conf" "${source}/deploy/*.service" "${source}/deploy/*.socket")
foreach(configuration IN LISTS configurations)
    set(place "${documents}/examples/${configuration}")
    if(CMAKE_INSTALL_PREFIX STREQUAL "/usr" AND configuration STREQUAL "apache.conf")
        set(place /etc/apache2/conf-available/sign-cgi.conf)
    elseif(CMAKE_INSTALL_PREFIX STREQUAL "/usr" AND configuration STREQUAL "lighttpd.conf")
        set(place /etc/lighttpd/conf-available/50-sign-cgi.conf)
    endif()
    install_placed(deploy/${configuration} FILE)
endforeach()

# Debian's zsh looks for the completions of packages in one folder, and for those of an administrator
# under /usr/local in another.
set(functions site-functions)
if(CMAKE_INSTALL_PREFIX STREQUAL "/usr")
    set(functions vendor-completions)
endif()
file(INSTALL "${source}/completions/_projectctl"
    DESTINATION "${CMAKE_INSTALL_PREFIX}/share/zsh/${functions}" TYPE FILE)
