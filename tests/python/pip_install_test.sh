#!/usr/bin/env bash
# The Python package as a user installs it: a clean clone of the sources
# (committed files only) installed with pip into a fresh venv of Debian's
# interpreter, then the pytest suite and every Python example run against the
# installed package from a directory outside the source tree; last, pip wheel.
#
#   pip_install_test.sh <source dir> [<libvekta.so to compare with, bit for bit>]
#
# Exits 77 (skipped) where Debian's interpreter or a module it needs is missing,
# and in a mutation run (VEKTA_MUTATION set).
set -euo pipefail

src=$1
library=${2:-}
python=/usr/bin/python3

# A mutation run changes the working tree, which this test does not install.
[ -z "${VEKTA_MUTATION:-}" ] || { echo "skipped: it installs the committed sources"; exit 77; }
[ -x "$python" ] || { echo "skipped: no $python"; exit 77; }
for module in venv ensurepip pip setuptools wheel numpy pytest matplotlib; do
  "$python" -c "import $module" 2>/dev/null || { echo "skipped: $python has no module $module"; exit 77; }
done

work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
log=$work/log
# Runs a command quietly; its output is shown when it fails.
quietly() {
  if ! "$@" > "$log" 2>&1; then
    cat "$log"
    echo "pip_install_test: failed: $*" >&2
    exit 1
  fi
}

if git -C "$src" rev-parse --git-dir > /dev/null 2>&1; then
  git clone --quiet "$src" "$work/src"
  echo "cloned $(git -C "$work/src" log -1 --format='%h %s')"
else  # no repository: the tree without its build directories
  tar -C "$src" --exclude=./build --exclude='*.egg-info' -cf - . | tar -C "$work" --one-top-level=src -xf -
fi

quietly "$python" -m venv --system-site-packages "$work/venv"
venv_python=$work/venv/bin/python
start=$(date +%s)
(cd "$work/src" && CMAKE_BUILD_PARALLEL_LEVEL=2 quietly "$venv_python" -m pip install --no-build-isolation .)
echo "pip install: $(($(date +%s) - start)) s"

mkdir "$work/run"
cd "$work/run"
"$venv_python" -c "import sys, vekta; assert vekta.__file__.startswith(sys.prefix), vekta.__file__; \
print('installed', vekta.__version__, 'in', vekta.__file__)"
VEKTA_LIBRARY=$library "$venv_python" -m pytest -q -p no:cacheprovider "$work/src/tests/python"
for example in "$work"/src/examples/*.py; do
  name=$(basename "$example" .py)
  "$venv_python" "$example" "$work/run/$name.png"
done

(cd "$work/src" && quietly "$venv_python" -m pip wheel --no-build-isolation --wheel-dir "$work/wheels" .)
wheel=$(echo "$work"/wheels/vekta-*.whl)
"$venv_python" -c "import sys, zipfile; names = zipfile.ZipFile(sys.argv[1]).namelist(); \
assert {'vekta/py.typed', 'vekta/_vekta.pyi', 'vekta/__init__.py'} <= set(names), names" "$wheel"
echo "pip wheel: $(basename "$wheel")"
