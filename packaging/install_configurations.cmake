# Installs the configurations of the folder ${deploy}: each names the folder of the installed programs
# instead of /usr/libexec/sign-cgi. Under the prefix /usr, which is Debian's, those of Apache and
# lighttpd go where these servers look for what can be enabled. All others are examples.

cmake_path(ABSOLUTE_PATH programs BASE_DIRECTORY "${CMAKE_INSTALL_PREFIX}")
cmake_path(ABSOLUTE_PATH documents BASE_DIRECTORY "${CMAKE_INSTALL_PREFIX}")

file(GLOB_RECURSE names RELATIVE "${deploy}"
    "${deploy}/*.conf" "${deploy}/*.service" "${deploy}/*.socket")
foreach(name IN LISTS names)
    set(place "${documents}/examples/${name}")
    if(CMAKE_INSTALL_PREFIX STREQUAL "/usr" AND name STREQUAL "apache.conf")
        set(place /etc/apache2/conf-available/sign-cgi.conf)
    elseif(CMAKE_INSTALL_PREFIX STREQUAL "/usr" AND name STREQUAL "lighttpd.conf")
        set(place /etc/lighttpd/conf-available/50-sign-cgi.conf)
    endif()
    cmake_path(GET place PARENT_PATH folder)
    cmake_path(GET place FILENAME file)

    file(READ "${deploy}/${name}" text)
    string(REPLACE /usr/libexec/sign-cgi "${programs}" text "${text}")
    file(WRITE "${work}/${file}" "${text}")
    file(INSTALL "${work}/${file}" DESTINATION "${folder}")
endforeach()
