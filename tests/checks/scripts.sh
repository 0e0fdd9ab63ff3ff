#!/usr/bin/env bash
# The project's own scripts pass shellcheck and Python's compiler.
. "$(dirname -- "${BASH_SOURCE[0]}")/common.sh"

cd "$root" || exit 1
python3 - <<'END' || exit 1
import pathlib
for folder in ("bench", "tests", "tools"):
    for path in pathlib.Path(folder).rglob("*.py"):
        compile(path.read_text(encoding="utf-8"), str(path), "exec")
END
command -v shellcheck >/dev/null 2>&1 || skip 'shellcheck is not installed'
scripts=(run test .ci/run)
mapfile -t -O "${#scripts[@]}" scripts < <(find tools tests bench -name '*.sh' | sort)
shellcheck -x -P SCRIPTDIR "${scripts[@]}"
