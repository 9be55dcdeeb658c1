# make package: a Debian package of both programs and their files, installed under /usr.
set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_NAME zav)
set(CPACK_PACKAGE_VENDOR "ZAV")
set(CPACK_PACKAGE_CONTACT "ZAV developers <zav@localhost>")
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY
    "Radio noise and field-strength meter with a receiver and a sound card")
set(CPACK_PACKAGE_DESCRIPTION
    "ZAV turns a radio receiver and the computer's sound card into a calibrated instrument: a \
Y-factor measurement gives received power, field strength and the external noise figure.")
set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_SECTION hamradio)
set(CPACK_STRIP_FILES ON)
# The shared libraries the programs link come from dpkg-shlibdeps.
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
# What the programs run or read at run time, which no library dependency names:
#   xdg-utils        opens the manual and web pages, associates .zav profiles (xdg-mime)
#   shared-mime-info update-mime-database for the profile type
#   ca-certificates  the update check and the transfer over https
set(CPACK_DEBIAN_PACKAGE_DEPENDS "xdg-utils, shared-mime-info, ca-certificates")
include(CPack)
