# The five things one does here. Each first installs what it lacks (Debian 12).
.PHONY: run demo test check bench
house := tools/house

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

# What Halvo costs, beside its own limit and beside the distribution's other equalizers. A peer that
# cannot be installed is left out.
bench:
	@$(house)/install-packages build run
	@$(house)/install-packages bench || echo "Without all peers, then."
	@$(house)/bench
