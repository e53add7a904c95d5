# Debian packages made by CPack from the install components (`cmake --workflow --preset package`):
#   libkdrcore1         component runtime: libKDRCore.so.1.0.0 and its SONAME link libKDRCore.so.1
#   libkdrcore-dev      component development: headers, CMake package, kdrcore.pc, libKDRCore.so
# The package preset installs into /usr, so GNUInstallDirs picks Debian's multiarch library
# directory. ci/package-check.sh runs lintian on the packages and builds the install consumers
# against their unpacked contents.
#
# lintian: no errors; its two warnings are overridden in debian/*.lintian-overrides, each with its
# reason. Four informational tags are left on purpose:
#   no-symbols-control-file         a C++ symbols file would list thousands of mangled names; the
#                                   shlibs file (>= the version built) gives the dependency
#   hardening-no-bindnow,           the library is built with the release flags the ABI baseline
#   hardening-no-fortify-functions  records; Debian's default build flags leave out bindnow too
#   binary-has-unneeded-section     CMake's install strip keeps .comment (the compiler's version)

set(KDRCORE_PACKAGE_MAINTAINER "KDRCore developers <kdrcore@example.org>"
    CACHE STRING "Maintainer field of the Debian packages")
set(KDRCORE_DEB_RUNTIME libkdrcore${PROJECT_VERSION_MAJOR})
set(KDRCORE_DEB_DEV libkdrcore-dev)
set(KDRCORE_DEB_REVISION 1)
set(KDRCORE_DEB_VERSION ${PROJECT_VERSION}-${KDRCORE_DEB_REVISION})

# /usr/share/doc/<package>/ of each package: copyright and changelog.Debian.gz (compressed with
# gzip -9n: no name or time stamp in the header, as Debian requires). EXCLUDE_FROM_ALL keeps them
# out of a plain `cmake --install`; the packages' component installs take them.
string(TIMESTAMP KDRCORE_DEB_DATE "%a, %d %b %Y %H:%M:%S +0000" UTC)
configure_file(${CMAKE_CURRENT_LIST_DIR}/debian/changelog.in
               ${PROJECT_BINARY_DIR}/debian/changelog.Debian @ONLY)
find_program(KDRCORE_GZIP gzip REQUIRED)
execute_process(COMMAND ${KDRCORE_GZIP} -9nf ${PROJECT_BINARY_DIR}/debian/changelog.Debian
                COMMAND_ERROR_IS_FATAL ANY)
set(kdrcore_deb_components runtime development)
set(kdrcore_deb_packages ${KDRCORE_DEB_RUNTIME} ${KDRCORE_DEB_DEV})
foreach(component package IN ZIP_LISTS kdrcore_deb_components kdrcore_deb_packages)
    install(FILES ${CMAKE_CURRENT_LIST_DIR}/debian/copyright
                  ${PROJECT_BINARY_DIR}/debian/changelog.Debian.gz
            DESTINATION ${CMAKE_INSTALL_DATAROOTDIR}/doc/${package}
            COMPONENT ${component} EXCLUDE_FROM_ALL)
    install(FILES ${CMAKE_CURRENT_LIST_DIR}/debian/${package}.lintian-overrides
            DESTINATION ${CMAKE_INSTALL_DATAROOTDIR}/lintian/overrides RENAME ${package}
            COMPONENT ${component} EXCLUDE_FROM_ALL OPTIONAL)
endforeach()

set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_NAME kdrcore)
set(CPACK_PACKAGE_VENDOR "KDRCore developers")
set(CPACK_PACKAGE_CONTACT ${KDRCORE_PACKAGE_MAINTAINER})
set(CPACK_PACKAGE_VERSION ${PROJECT_VERSION})
set(CPACK_PACKAGING_INSTALL_PREFIX ${CMAKE_INSTALL_PREFIX})
set(CPACK_PACKAGE_DIRECTORY ${PROJECT_BINARY_DIR}/packages)
# 0755 directories whatever the umask of the build.
set(CPACK_INSTALL_DEFAULT_DIRECTORY_PERMISSIONS OWNER_READ OWNER_WRITE OWNER_EXECUTE
    GROUP_READ GROUP_EXECUTE WORLD_READ WORLD_EXECUTE)

set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_COMPONENTS_ALL runtime development)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_RELEASE ${KDRCORE_DEB_REVISION})
set(CPACK_DEBIAN_PACKAGE_MAINTAINER ${KDRCORE_PACKAGE_MAINTAINER})
set(CPACK_DEBIAN_PACKAGE_SOURCE kdrcore)
set(CPACK_DEBIAN_PACKAGE_PRIORITY optional)
set(CPACK_DEBIAN_PACKAGE_CONTROL_STRICT_PERMISSION ON)

set(CPACK_DEBIAN_RUNTIME_PACKAGE_NAME ${KDRCORE_DEB_RUNTIME})
set(CPACK_DEBIAN_RUNTIME_PACKAGE_SECTION libs)
# Depends from dpkg-shlibdeps (libc6, libstdc++6, libgcc-s1 at the versions the build needs).
set(CPACK_DEBIAN_RUNTIME_PACKAGE_SHLIBDEPS ON)
# The shlibs control file tells dpkg-shlibdeps of a host's package what to depend on.
set(CPACK_DEBIAN_PACKAGE_GENERATE_SHLIBS ON)
set(CPACK_DEBIAN_PACKAGE_GENERATE_SHLIBS_POLICY ">=")
# The packaged library is stripped; its debug information stays in the build tree (the preset
# builds with -g). CPack's split-off -dbgsym package (CPACK_DEBIAN_DEBUGINFO_PACKAGE) is not used:
# CMake 3.25 writes its md5sums with build-tree paths and gives it no copyright file, two lintian
# errors.
set(CPACK_STRIP_FILES ON)
# dpkg's ldconfig trigger (activate-noawait ldconfig) runs ldconfig once the library is installed
# or removed. CPack adds its own postinst and postrm calls as well (see the lintian overrides).
configure_file(${CMAKE_CURRENT_LIST_DIR}/debian/triggers ${PROJECT_BINARY_DIR}/debian/triggers
               COPYONLY)
set(CPACK_DEBIAN_RUNTIME_PACKAGE_CONTROL_EXTRA ${PROJECT_BINARY_DIR}/debian/triggers)
set(CPACK_COMPONENT_RUNTIME_DESCRIPTION "single-precision 3D maths, geometry and containers (library)
KDRCore is the support library at the bottom of a 3D graphics application:
vectors, 4x4 matrices, quaternions and colours in single precision, geometric
queries (boxes projected through a camera and tested against screen
rectangles among them), a small dense solver, bit arrays, pointer lists,
keyed arrays, id allocation and a radix sort. Every matrix and quaternion
operation runs through one replaceable process-wide kernel object.

This package holds the shared library.")

set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_NAME ${KDRCORE_DEB_DEV})
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_SECTION libdevel)
# Exactly the library of the same build: the headers describe its class layouts.
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_DEPENDS "${KDRCORE_DEB_RUNTIME} (= ${KDRCORE_DEB_VERSION})")
set(CPACK_COMPONENT_DEVELOPMENT_DESCRIPTION "single-precision 3D maths, geometry and containers (development files)
KDRCore is the support library at the bottom of a 3D graphics application:
vectors, 4x4 matrices, quaternions and colours in single precision, geometric
queries, a small dense solver and containers, with a replaceable kernel.

This package holds the C++ headers, the CMake package (find_package(KDRCore))
and the pkg-config file (kdrcore) needed to build programs against it.")

include(CPack)
