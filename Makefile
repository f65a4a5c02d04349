# The usual ways in; `make help` lists them. CMake does the work: CMakePresets.json has its settings.
.DEFAULT_GOAL := build
.PHONY: build run test release-soak soak bench check format tidy asan tsan memcheck fuzz coverage docs package install uninstall clean help

# CMake's reports of what it found are of no interest, its warnings are.
CONFIGURE := cmake --log-level=NOTICE --preset

build: ## Build for use: build/LumoBrowser.app/lumobrowser, build/lumoctl, build/juniva-demo
	@scripts/setup build
	@$(CONFIGURE) release
	cmake --build --preset release

run: ## Open the kiosk on the demo server; without a display, on a virtual one
	@scripts/run

test: ## Build and run every test
	@scripts/setup build test
	@$(CONFIGURE) dev
	cmake --build --preset dev
	ctest --preset dev

RELEASES ?= 200

release-soak: ## Start, release through the exit sheet and quit 200 times (RELEASES=…)
	@scripts/setup build test
	@$(CONFIGURE) dev
	cmake --build --preset dev
	LUMO_RELEASES=$(RELEASES) build/dev/station_tests --gtest_filter='ReleaseSoakTest.*'

ORDERS ?= 1000

soak: ## Play a thousand orders on one kiosk, with all that goes wrong in a shop, and a hundred that end it (ORDERS=…)
	@scripts/setup build test
	@$(CONFIGURE) dev
	cmake --build --preset dev
	LUMO_ORDERS=$(ORDERS) build/dev/station_tests --gtest_filter='SoakTest.*'

bench: ## Compare with other programs, from the start to the log, and write docs/bench.md
	@scripts/setup build bench
	@$(CONFIGURE) release
	cmake --build --preset release
	cmake --build --preset release --target first_pixel bus_signals receipt_steps server_scan exif_steps support_steps
	bench/run
	bench/release
	bench/receipt
	bench/scan
	bench/exif
	bench/support
	bench/report

check: ## Check format, layers and words
	@scripts/setup build test
	scripts/check-format
	scripts/check-layers
	scripts/check-words

format: ## Format the C++ sources
	@scripts/setup test
	scripts/check-format --fix

tidy: ## Run clang-tidy over what changed
	@scripts/setup build test
	@$(CONFIGURE) dev
	scripts/check-tidy

asan: ## Run the unit and contract tests under AddressSanitizer and UBSan
	@scripts/setup build test
	@$(CONFIGURE) asan
	cmake --build --preset asan
	ctest --preset asan

tsan: ## Run the unit tests under ThreadSanitizer
	@scripts/setup build test
	@$(CONFIGURE) tsan
	cmake --build --preset tsan
	ctest --preset tsan

memcheck: ## Run the unit tests under valgrind
	@scripts/setup build test memcheck
	@$(CONFIGURE) dev
	cmake --build --preset dev
	scripts/memcheck

FUZZ_SECONDS ?= 3600
FUZZ_TARGETS ?=

fuzz: ## Feed whatever takes bytes from outside with made-up ones (FUZZ_SECONDS=… each, FUZZ_TARGETS=…)
	@scripts/setup build test fuzz
	@$(CONFIGURE) fuzz
	cmake --build --preset fuzz
	scripts/fuzz --seconds $(FUZZ_SECONDS) $(FUZZ_TARGETS)

coverage: ## Tell what the tests reach of src: build/coverage/report/index.html; fails where it is less than agreed
	@scripts/setup build test
	@$(CONFIGURE) coverage
	cmake --build --preset coverage
	find build/coverage -name '*.gcda' -delete
	status=0; ctest --preset coverage || status=$$?; scripts/coverage && exit $$status

docs: ## Make the reference of the interfaces: build/docs/html/index.html, and the list of what is tested
	@scripts/setup docs
	scripts/tested-behaviour
	@mkdir -p build/docs
	doxygen docs/Doxyfile

package: ## Make the Debian package and have lintian judge it: build/package/lumobrowser_*.deb
	@scripts/setup build package
	scripts/package

# A package's build sets DESTDIR, the folder that stands for / meanwhile.
PREFIX ?= /usr/local
DESTDIR ?=
STAGE = $(abspath $(DESTDIR))

install: build ## Install below PREFIX (/usr/local), for a package below DESTDIR
	DESTDIR='$(STAGE)' cmake --install build --prefix '$(abspath $(PREFIX))'
	@packaging/refresh-caches '$(abspath $(PREFIX))' '$(STAGE)'

uninstall: ## Remove what was installed below PREFIX
	@packaging/uninstall '$(abspath $(PREFIX))' '$(STAGE)'

clean: ## Remove all that was built
	rm -rf build

help: ## List what can be made
	@sed -n 's/^\([a-z-]*\):[^#]*## /\1	/p' Makefile | expand -t16
