# What one does here. Each first installs what it lacks (Debian 12).
.PHONY: run demo test check check-macos bench package uninstall
house := scripts

# With a desktop and a sound server: the equalizer itself. Without: the demonstration.
run:
	@$(house)/install-packages build run
	@$(house)/run

# Two simulated outputs in a private session; what was heard is left in out/run/.
demo:
	@$(house)/install-packages build run
	@$(house)/demo

test:
	@$(house)/install-packages build run test
	@$(house)/test

# Everything beyond the tests: format, lint, layers, sanitizers, the real-time rules.
check:
	@$(house)/install-packages build run test check
	@$(house)/check

# A package for Debian 12 in out/package/, checked.
package:
	@$(house)/install-packages build run package
	@$(house)/package

# Ends Halvo in your session, which has its default output and levels back, and removes the package.
uninstall:
	@$(house)/uninstall

# All that macOS runs, compiled against an SDK's headers: CONTRIBUTING.md says how to get them.
check-macos:
	@$(house)/install-packages build test check
	@$(house)/check-macos "$(SDK)"

# What Halvo costs, beside its own limit and beside the distribution's other equalizers. A peer that
# cannot be installed is left out.
bench:
	@$(house)/install-packages build run
	@$(house)/install-packages bench || echo "Without all peers, then."
	@$(house)/bench
