# The entry points. Each names the packages it lacks, and installs them for root, with YES=1, or when you
# agree (Debian 12 and 13).
.PHONY: deps run demo test check check-macos bench package uninstall

# Installs, with sudo, what all the commands below need.
deps:
	@scripts/install-packages --yes build run test check package

# With a desktop and a sound server: the equalizer. Without: the demonstration.
run:
	@scripts/install-packages build run
	@scripts/run

# Plays a track in a private session with two simulated outputs; recordings and report in out/run/.
demo:
	@scripts/install-packages build run
	@scripts/demo

test:
	@scripts/install-packages build run test
	@scripts/test

# All checks besides the tests: format, lint, layers, sanitizers, real-time rules.
check:
	@scripts/install-packages build run test check
	@scripts/check

# A Debian package in out/package/, checked by lintian.
package:
	@scripts/install-packages build run package
	@scripts/package

# Ends Halvo in your session, restores default output and levels, and removes the package.
uninstall:
	@scripts/uninstall

# Compiles the macOS sources against an SDK's headers; CONTRIBUTING.md says where to get them.
check-macos:
	@scripts/install-packages build test check
	@scripts/check-macos "$(SDK)"

# Halvo's costs, compared with their lower bound and with the distribution's other equalizers. Leaves out
# equalizers that cannot be installed.
bench:
	@scripts/install-packages build run
	@scripts/install-packages bench || echo "Some other equalizers are not installed; measuring without them."
	@scripts/bench
