# The project's commands under the names that everybody tries first; CMake builds.
.PHONY: all test check release packages

all:
	cmake --preset release
	cmake --build --preset release

test:
	scripts/test

check:
	scripts/check

release:
	scripts/release

packages:
	scripts/packages
