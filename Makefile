# Two commands do everything on a fresh machine: `make run` and `make test`. Each installs what is missing.
.POSIX:
PRESET = release
JOBS = 2
PREFIX = /usr/local
SAMPLES = /usr/share/matplotlib/mpl-data/sample_data

.PHONY: all setup build product run test test-release test-dev test-threads test-view test-farm renders failures mutants reference figures mode-pages bench bench-table tidy install clean

all: build

setup:
	@sh scripts/setup.sh

build: setup
	cmake --preset $(PRESET)
	cmake --build --preset $(PRESET) -j $(JOBS)

# What is installed, without tests and benches.
product: setup
	cmake --preset $(PRESET)
	cmake --build --preset $(PRESET) -j $(JOBS) --target product

run: product
	@sh scripts/example.sh build/$(PRESET)/bin/qx $(SAMPLES) out

test: test-release test-dev test-threads

test-release:
	@$(MAKE) PRESET=release check
test-dev:
	@$(MAKE) PRESET=dev check
test-threads:
	@$(MAKE) PRESET=tsan check

check: build
	ctest --preset $(PRESET) -j $(JOBS)

bench: build
	build/$(PRESET)/bin/qx_bench

# make bench-table: what the routines reach beside what the memory allows, as Markdown; fewer lines by LINES=over
bench-table: build
	python3 scripts/bench-table.py build/$(PRESET) $(LINES)

# make figures: those of README, beside the tools that are installed
figures: product
	python3 scripts/figures.py build/$(PRESET)/bin/qx

# make mode-pages: a page for each mode, in docs/modes
mode-pages: build
	python3 scripts/mode-pages.py build/$(PRESET)/bin/qx docs/modes

# make reference: pages of the interface, from its comments
reference: setup
	sh scripts/reference.sh build/reference

# make test-view: the page of qx view in a browser, of which pictures go to build/view
test-view: build
	@sh scripts/setup.sh packages-view.txt
	python3 tests/view/browser.py build/$(PRESET)/bin/qx build/view

# make test-farm: two nodes of Slurm and workers of Dask on this machine, of which one is killed midway
test-farm: product
	@sh scripts/setup.sh packages-farm.txt
	python3 tests/farm/two_nodes.py build/$(PRESET)/bin/qx build/farm
	/usr/bin/python3 tests/farm/dask_workers.py build/$(PRESET)/bin/qx build/dask

# make renders OTHER=/path/of/another/build: whether both make the same renders, bit for bit
renders: build
	sh scripts/renders.sh build/$(PRESET) $(OTHER) $(SAMPLES)

# make failures: every allocation of some command lines fails once; takes minutes; fewer of them by WORD=render
failures: build
	python3 scripts/failures.py build/$(PRESET) $(WORD)

# make mutants: whether the tests see each of the faults of tests/mutants, planted in a copy; takes half an hour
mutants: setup
	sh scripts/mutants.sh build/mutants

tidy: build
	sh scripts/tidy.sh build/$(PRESET)

install: product
	cmake --install build/$(PRESET) --prefix $(PREFIX)

clean:
	rm -rf build out
