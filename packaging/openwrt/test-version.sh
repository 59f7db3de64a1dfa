#!/bin/sh
# test.sh PACKAGE VERSION: what a feed's checks run where the package has been installed.
#
# The daemon takes no option that shows its version, and any word without a dash for its port: it is
# not started, but looked into.

case "$1" in
modemd)
	[ "$(grep -c -F "$2" /usr/sbin/modemd)" -gt 0 ]
	;;
modemctl)
	[ "$(modemctl --version)" = "modemctl $2" ]
	;;
*)
	echo "no package $1" >&2
	exit 2
	;;
esac
