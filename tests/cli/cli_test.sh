#!/bin/sh
# Drives vellhost.exe with the plug-in from end to end. Prints a line for each check that fails.
# Usage: cli_test.sh BUILD_BIN_DIR
bin=$(cd "$1" && pwd) || exit 2
root=$(cd "$(dirname "$0")/../.." && pwd)
wine=$root/scripts/wine
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
cd "$work" || exit 2
export LC_ALL=C.UTF-8
failures=0

# Runs vellhost; leaves its output in the files out and err and its exit code in $code.
vellhost() {
    "$wine" "$bin/vellhost.exe" "$@" >out 2>err
    code=$?
}

# check WHAT EXPECTED ACTUAL
check() {
    if [ "$2" != "$3" ]; then
        failures=$((failures + 1))
        printf 'FAILED: %s\n--- expected\n%s\n--- actual\n%s\n' "$1" "$2" "$3"
    fi
}

# check_contains WHAT FILE TEXT
check_contains() {
    if ! grep -qF -- "$3" "$2"; then
        failures=$((failures + 1))
        printf 'FAILED: %s\n--- wanted in %s\n%s\n--- there is\n%s\n' "$1" "$2" "$3" "$(cat "$2")"
    fi
}

printf 'h\303\251llo\r\nsecond line of the file\n' >utf8.txt
printf 'twelve units' >short.txt
# An image of 3 by 2 pixels, as far as its header tells.
printf '\211PNG\r\n\032\n\000\000\000\015IHDR\000\000\000\003\000\000\000\002\010\002' >image.png

# Many statements in one process: values, errors with their lines, steps, containers.
cat >statements.txt <<'END'
// a comment, then a blank line

"a" & ¶ & "é\"\\" & "C:\temp"
1 / 8
Date( 2 ; 30 ; 2020 )
Time( 1 ; 2 ; 3.5 )
Timestamp( Date( 1 ; 1 ; 2020 ) ; Time( 13 ; 0 ; 0 ) )
$file = "utf8.txt"
VlFile_GetContents( "-Encoding=UTF8" ; $FILE )
vlfile_getcontents( "-Encoding=UTF8" ; "no such file" )
$image = Container( "image.png" )
$image
VlFile_GetContents( "-Encoding=UTF8" ; "short.txt" )
VlFile_Version( "" )
Length( VlFile_GetContents( "-Encoding=UTF8" ; $file ) ; 1 )
VlFile_GetContents( "only switches" )
VlFile_GetContens( 1 ; 2 )
1 + "
step "Enable/Disable Vell File Plug-in" [ 1 ; "secret" ; "too many" ]
step "enable/disable vell file plug-in" [ 99 ]
step "No such step"
Position( "abcABC" ; "bc" ; 1 ; 2 ) & Upper( "ß é" )
END
cat >expected.txt <<'END'
{"line":3,"type":"text","result":"a\ré\"\\C:\\temp","code":0}
{"line":4,"type":"number","result":".125","code":0}
{"line":5,"type":"date","result":"3/1/2020","code":0}
{"line":6,"type":"time","result":"1:02:03.5","code":0}
{"line":7,"type":"timestamp","result":"1/1/2020 1:00:00 PM","code":0}
{"line":8,"type":"text","result":"utf8.txt","code":0}
{"line":9,"type":"text","result":"héllo\r\nsecond line of the file\n","code":0}
{"line":10,"type":"text","result":"$$-43","code":-43}
{"line":11,"type":"container","result":"image.png","code":0,"streams":[{"type":"FNAM","size":18},{"type":"SIZE","size":4},{"type":"PNGf","size":26}]}
{"line":12,"type":"container","result":"image.png","code":0,"streams":[{"type":"FNAM","size":18},{"type":"SIZE","size":4},{"type":"PNGf","size":26}]}
{"line":13,"type":"text","result":"twelve units","code":0}
{"line":14,"type":"text","result":"Vell File Plug-In 14.0","code":0}
END
vellhost --json --check-leaks --file statements.txt
check 'statements: exit code' 2 "$code"
check 'statements: values' "$(cat expected.txt)" "$(head -n 12 out)"
check 'statements: lines with errors' '15 16 17 18 19 20 21' \
    "$(sed -n 's/^{"line":\([0-9]*\),"error".*/\1/p' out | tr '\n' ' ' | sed 's/ $//')"
check_contains 'argument count of a built-in' out 'Length( text ) takes 1 argument, 2 are given'
check_contains 'argument count of the plug-in' out 'takes 2 to 4 arguments, 1 is given'
check_contains 'suggestion' out 'is VlFile_GetContents meant?'
check_contains 'step: too many' out '"the step has 2 parameters, 3 are given","column":58'
check_contains 'step: no such choice' out 'has no value 99; it has '
check 'statements: the last one still runs' \
    '{"line":22,"type":"text","result":"5ß É","code":0}' "$(tail -n 1 out)"

# Every kind of step parameter passes through the plug-in: disable, be refused, enable.
cat >steps.txt <<'END'
step "Enable/Disable Vell File Plug-in" [ "Disable all functions" ; "secret" ]
VlFile_GetContents( "" ; "utf8.txt" )
step "Enable/Disable Vell File Plug-in" [ 2 ; "wrong" ]
step "Enable/Disable Vell File Plug-in" [ 2 ; "secret" ]
Left( VlFile_GetContents( "-Encoding=UTF8" ; "utf8.txt" ) ; 5 )
$here = VlFile_GetPathTo( "currentFileName" )
Left( $here ; 3 ) & VlFile_GetFileName( "" ; $here )
VlFile_Exists( "" ; $here )
VlFile_GetFileName( "" ; VlFile_GetPathTo( "currentApplication" ) )
END
vellhost --file steps.txt --check-leaks
check 'steps: exit code, an error result' 1 "$code"
check 'steps' "0
\$\$-4220
\$\$-4218
0
héllo
Z:\\steps.txt
1
vellhost.exe" "$(cat out)"

# One calculation.
vellhost 'VlFile_GetContents( "-Encoding=UTF8" ; "utf8.txt" ) & ¶'
check 'line ends become line feeds' "$(printf 'h\303\251llo\nsecond line of the file\n\n.')" \
    "$(cat out; echo .)"
check 'exit code of a good result' 0 "$code"
vellhost --raw 'VlFile_GetContents( "-Encoding=UTF8" ; "utf8.txt" ) & ¶'
check 'raw' "$(printf 'h\303\251llo\r\nsecond line of the file\n\r.')" "$(cat out; echo .)"
vellhost 'VlFile_GetContents( "" ; "no such file" )'
check 'exit code of an error result' "1 \$\$-43" "$code $(cat out)"
vellhost '"é" & Lenght( 1 )'
check 'exit code of a calculation error' 2 "$code"
check 'nothing on the output' '' "$(cat out)"
check 'caret' 'vellhost: there is no function Lenght; is Length meant? (1:7)
    "é" & Lenght( 1 )
          ^^^^^^' "$(cat err)"
vellhost --save copy.png 'Container( "image.png" )'
check 'streams of a container' 'container "image.png", 3 streams
  FNAM          18 bytes
  SIZE           4 bytes
  PNGf          26 bytes' "$(cat out)"
cmp -s image.png copy.png || check 'saved file' 'the same bytes' 'others'

# Statements from standard input, with Windows line ends and a byte order mark.
printf '\357\273\277$a = 20\r\n$a * 2\r\n' | "$wine" "$bin/vellhost.exe" >out 2>err
check 'standard input' 40 "$(cat out)"

# A step on the command line; options may follow its arguments.
vellhost --step 'Enable/Disable Vell File Plug-in' '' '"x" & 1' --json
check 'step: an omitted list takes its default' '{"line":1,"type":"text","result":"0","code":0}' \
    "$(cat out)"
vellhost --step 'Copy File' '1 +'
check 'step: error in an argument' 'vellhost: a value is missing at the end (1:4)
    1 +
       ^' "$(cat err)"

# What is registered.
vellhost --list
check_contains 'list: function' out '  4223  2-4 VlFile_GetContents( switches ; filePath'
check_contains 'list: step' out '  7210  2   step "Copy File" [ Source filePath ; Destination filePath ]'
vellhost --describe 'copy file'
check_contains 'describe: parameter' out '    2  calc  Destination filePath (text)'
check_contains 'describe: target' out '  target        Result (error) (text)'

# Hosts of other kinds, failures of the host, usage errors.
vellhost --api-version 49 1
check 'refused API version' '2 vellhost: the plug-in does not run on API version 49' \
    "$code $(cat err)"
vellhost --api-version=56 --app-type 3 --host-version 'Server 15.0.1' --idle 2 --check-leaks \
    'Get( ApplicationVersion ) & " " & VlFile_Version'
check 'a server host' '0 Server 15.0.1 Vell File Plug-In 14.0' "$code $(cat out)"
vellhost --fail-call 2 --check-leaks 'VlFile_GetContents( "" ; "utf8.txt" )'
check 'a failing host call' "1 \$\$-108" "$code $(cat out)"
check_contains 'a failing host call is named' err 'the failure struck FM_'
vellhost --jsno 1
check_contains 'unknown option' err 'there is no option --jsno; is --json meant?'
check 'exit code of a usage error' 2 "$code"

# What teaches: pages of the reference, switches that do not exist, hints, statements and times.
pages="Z:$root/docs/reference/functions"
vellhost --reference "$pages" --help getfilehash
check_contains 'help: the page' out '  -SHA256            no '
vellhost --reference "$pages" --describe 'copy file'
check_contains 'describe: codes' out '  -48    a file or folder stands at the destination'
vellhost --reference "$pages" --help GetFileHsh
check 'help: what is meant' '2 vellhost: there is no function or script step GetFileHsh; is VlFile_GetFileHash meant?' \
    "$code $(cat err)"
vellhost --reference "$pages" 'VlFile_GetContents( "-Encoding=UTF-9 -Encodng=UTF8" ; "/utf9.txt" )'
check 'switches that do not exist, and a hint' "1 \$\$-43
-Encoding=UTF-9: VlFile_GetContents has no such switch; -Encoding=UTF-8?
-Encodng=UTF8: VlFile_GetContents has no such switch; -Encoding=UTF8?
hint: \"/utf9.txt\" is read without" "$code $(cat out)
$(cut -c 1-80 err | sed 's/ its first slash.*//')"
printf '// Sums\n1 + 1\n' | "$wine" "$bin/vellhost.exe" --echo --timing >out 2>err
check 'statements before their results' '
Sums
> 1 + 1
2' "$(cat out)"
check_contains 'times' err ' ms  line 2'
"$wine" "$bin/vellhost.exe" --timing '1 + 1' >out 2>err
check_contains 'the time of one calculation' err ' ms  line 1'
printf '2 * 3\nhistory\nquit\n7\n' | "$wine" "$bin/vellhost.exe" --prompt >out 2>err
check 'the prompt behind a pipe' "$(printf '\036\n6\n\036\n1  2 * 3\n2  history\n\036')" \
    "$(tail -n +2 out)"

# Output that cannot be written.
"$wine" "$bin/vellhost.exe" '6 * 7' >/dev/full 2>err
check 'exit code on a full disk' 2 "$?"
check_contains 'a full disk is told' err 'standard output cannot be written, Windows error 112'
{ "$wine" "$bin/vellhost.exe" '2 ^ 9' 2>err; echo "$?" >code; } | :
check 'a reader that has gone' '0 ' "$(cat code) $(cat err)"

[ "$failures" -eq 0 ] && echo 'all checks passed'
[ "$failures" -eq 0 ]
