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

# Under the prefix /usr, which is Debian's, the configurations go where the servers and systemd look for
# what can be enabled, beside folders for an administrator's own lines. Elsewhere they are examples.
file(GLOB_RECURSE configurations RELATIVE "${source}/deploy"
    "${source}/deploy/*.conf" "${source}/deploy/*.service" "${source}/deploy/*.socket")
foreach(configuration IN LISTS configurations)
    set(place "${documents}/examples/${configuration}")
    if(CMAKE_INSTALL_PREFIX STREQUAL "/usr")
        if(configuration STREQUAL "apache.conf")
            set(place /etc/apache2/conf-available/sign-cgi.conf)
        elseif(configuration STREQUAL "lighttpd.conf")
            set(place /etc/lighttpd/conf-available/50-sign-cgi.conf)
        elseif(configuration MATCHES "^nginx-(.*)$")
            set(place /etc/nginx/snippets/sign-cgi-${CMAKE_MATCH_1})
        elseif(configuration MATCHES "^systemd/(.*)$")
            set(place /usr/lib/systemd/system/${CMAKE_MATCH_1})
        endif()
    endif()
    install_placed(deploy/${configuration} FILE)
endforeach()
if(CMAKE_INSTALL_PREFIX STREQUAL "/usr")
    foreach(server IN ITEMS apache lighttpd nginx)
        file(INSTALL DESTINATION /etc/sign-cgi/${server} TYPE DIRECTORY FILES "")
    endforeach()
endif()

# Debian's zsh looks for the completions of packages in one folder, and for those of an administrator
# under /usr/local in another.
set(functions site-functions)
if(CMAKE_INSTALL_PREFIX STREQUAL "/usr")
    set(functions vendor-completions)
endif()
file(INSTALL "${source}/completions/_projectctl"
    DESTINATION "${CMAKE_INSTALL_PREFIX}/share/zsh/${functions}" TYPE FILE)
