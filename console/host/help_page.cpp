#include "console/host/help_page.h"

namespace vell::console {

const std::string_view help_page = R"(vellhost: runs the plug-in without FileMaker

Usage
  vellhost EXPR                 evaluate one calculation and print its result
  vellhost --file F             run a file of statements, one a line
  vellhost --step NAME ARG…     run one script step; each ARG is a calculation, '' leaves one out
  vellhost --list               list the plug-in's functions and script steps
  vellhost --describe NAME      tell how a function or step is called, its switches and its codes
  vellhost --help NAME          show the page of the reference on a function or step
  vellhost                      a prompt; or, when input is not a terminal, statements from it

Output
  --json            one JSON object a statement:
                    {"line":1,"type":"text","result":"…","code":0}
  --raw             write texts as they are: CR stays CR, nothing is added
  --save FILE       write the main stream of a container result to FILE
  --echo            write each statement before its result
  --timing          tell on standard error how long each statement took
  --reference DIR   the pages of the reference (the folder "reference" beside this program)

The host that is played
  --plugin PATH     the plug-in (VellFile.fmx64 beside this program)
  --app-type N      application type (1): 0 Pro Advanced, 1 Pro, 2 Runtime, 3 Server,
                    4 Web server, 5 Mobile, 7 Server (SASE), 8 Web server (FMSE)
  --api-version N   version of the plug-in interface (67)
  --host-version T  version text (Pro 19.5.1)
  --idle N[:LEVEL]  send N idle messages after start-up and after each statement; LEVEL (0) is
                    0 idle, 1 not idle, 2 script paused, 3 script running, 4 unsafe
  --window          show a window of the host's class, and hold it open after the statements until
                    it is closed; every script that a drop starts is printed
  --window-scale P  the same on a display scaled to P percent (100)

Checks
  --check-leaks     exit with 3 when the plug-in leaves host objects behind
  --fail-call N[:S] let the N-th host call of each function or step fail: S is 1 out of memory
                    (the default), 2 unknown failure, 3 access violation

Statements
  EXPR                          print a result
  $name = EXPR                  keep a value
  step "NAME" [ ARG ; … ]       run a script step; an empty ARG takes the host's default
  // …                          a comment

Calculations
  "text"  ¶  12.5  $name  ( … )  & + - * / ^  = ≠ < ≤ > ≥ <> <= >=  and or xor not
  In texts \" is a quote, \\ a backslash, \¶ the paragraph sign, ¶ a carriage return; any other
  backslash stays: "C:\temp\a.txt".
  If Case IsEmpty Exact True False · Left Middle Right Length Position PatternCount Substitute
  Trim Upper Lower Char Code · Date Time Timestamp · GetAsText GetAsNumber GetAsDate GetAsTime
  GetAsTimestamp · Container( path ) · Get( CurrentDate ) and others, and all of the plug-in

Exit codes
  0 fine   1 a result begins with $$   2 usage, calculation or output error   3 objects left over

Examples
  vellhost 'VlFile_Version( "" )'
  vellhost 'VlFile_GetContents( "-Encoding=UTF8" ; "README.md" )'
  vellhost --window 'VlFile_DragAndDrop( "-AddDragAndDropHandler" ; "Solution" ; "Dropped" ;
                    "40 60 300 180" )'
  vellhost --save copy.png 'Container( "picture.png" )'
)";

const std::string_view interactive_help =
    R"(EXPR                      print the result of a calculation
$name = EXPR              keep a value
step "NAME" [ ARG ; … ]   run a script step
list                      the plug-in's functions and script steps
describe NAME             how one of them is called, its switches and its codes
help NAME                 its page of the reference, with examples
history                   what was entered; !N runs entry N again
variables                 the values that are kept
quit                      leave (or Ctrl+D)

For example: "It is " & Get( CurrentDate ) & ¶ & VlFile_Version( "" )
vellhost --help tells more about calculations.
)";

} // namespace vell::console
