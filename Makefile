# The two commands to know are `make run` and `make test`; each installs what it needs.

.PHONY: run run-session run-phone soak test test-phone check bench bench-screens sanitize tsan fuzz coverage \
    mutate macos kin package format format-check tidy clean

# Plays one whole life of a hold on a simulated Mac.
run:
	@scripts/setup build
	@scripts/build release life-of-a-hold VelmoPowerDaemonSimulated simulated-pmset velmo-power velmo-mac
	@build/release/bin/life-of-a-hold

# Plays one whole life of a terminal session.
run-session:
	@scripts/setup build
	@scripts/build release life-of-a-session
	@build/release/bin/life-of-a-session

# Serves the page of a session of its own, and waits: a browser may be pointed at it.
run-phone:
	@scripts/setup build phone
	@scripts/build release velmo-phone velmo-session
	@lab/phone-page/play build/release/bin

MINUTES ?= 10

# Wears the session host out under the sanitizers: 10,000 viewers, 1,000 sessions, races, a GiB of
# output, then MINUTES of everything at once.
soak:
	@scripts/setup build clang
	@scripts/build asan velmo-session
	@lab/session-soak/soak build/asan/bin --minutes $(MINUTES)

test:
	@scripts/setup build test
	@scripts/build debug all
	@ctest --preset debug

# All tests but those that take seconds each.
check:
	@scripts/setup build test
	@scripts/build debug all
	@ctest --preset debug --label-exclude slow

# Everything beside its peers and limits, and what the daemon costs; the tables go into docs/.
bench:
	@scripts/setup build bench phone
	@scripts/build bench velmo-bench VelmoPowerDaemonSimulated simulated-pmset velmo-mac session-under-test velmo-phone
	@build/bench/bin/velmo-bench docs
	@bench/daemon-footprint build/bench/bin | tee -a docs/benchmarks.md
	@bench/session-costs build/bench/bin | tee -a docs/benchmarks.md

# What comes back on a terminal when a session is continued, beside tmux.
bench-screens:
	@scripts/setup build
	@scripts/build release velmo-session
	@bench/screens build/release/bin

sanitize:
	@scripts/setup build test clang
	@scripts/build asan all
	@ctest --preset asan

tsan:
	@scripts/setup build test clang
	@scripts/build tsan all
	@ctest --preset tsan

# The phone's page in a real browser.
test-phone:
	@scripts/setup build phone browser
	@scripts/build debug velmo-phone velmo-session velmo-mac VelmoPowerDaemonSimulated simulated-pmset
	@tests/phone/browser/run build/debug/bin

SECONDS ?= 60

# Each parser against any bytes at all, for SECONDS; TARGETS="Json Hotkeys" for a few of them.
fuzz:
	@scripts/setup build test clang
	@scripts/build asan fuzz
	@scripts/fuzz $(SECONDS) $(TARGETS)

# What the tests reach.
coverage:
	@scripts/setup build test clang
	@scripts/build coverage all
	@rm -rf build/coverage/profiles
	@ctest --preset coverage
	@scripts/coverage

# Plants every known fault and sees that a test notices it; LISTS="daemon support" for a few of them.
mutate:
	@scripts/setup build test
	@scripts/mutate $(LISTS)

# The Mac's executables; elsewhere by a cross build, which checks what a file can tell and runs them
# on an emulated Mac.
macos:
	@scripts/macos

# All that a Mac's `make test` compiles, velmo-power's tests over the Mac's executable, and all tests
# on later releases of Debian; for root there.
kin:
	@scripts/macos tests
	@scripts/setup build test
	@scripts/build debug VelmoPowerDaemonSimulated simulated-pmset velmo-mac velmo-power
	@lab/emulated-mac/power-client build/emulated-mac/emulated-mac build/macos-cross/bin build/debug/bin
	@scripts/build-against trixie
	@scripts/build-against sid

# The Mac's installer package, of executables that are built and signed; elsewhere says what it would run.
package:
	@packaging/macos/package build/release/bin

format:
	@scripts/setup clang
	@scripts/sources | xargs clang-format-19 -i

format-check:
	@scripts/setup clang
	@scripts/sources | xargs clang-format-19 --dry-run --Werror

tidy:
	@scripts/setup build test clang
	@scripts/build debug all
	@scripts/tidy

clean:
	@rm -rf build
