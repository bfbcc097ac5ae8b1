# rbk-modem as people and scripts run it: starts that are refused, with one line and status 1, and ends.
: AWAIT_READY timeout 20 sh -c 'until grep -qs ready out; do sleep 0.01; done'
: AWAIT_READER timeout 20 sh -c 'until RBK_MODEM=unix:s "$RBK" 4 1 0 10 2> none | grep -q ": *1E"; do sleep 0.01; done'
: END wait $!; echo $?; ls s s.lock 2> none; rm -f out

## A start that is refused goes on, or has touched what lies there
$ echo precious > file && ln -s file link && ln -s file linked.lock && mkfifo pipe && printf '[nv]\n"0/1" = "x"\n' > bad.toml
$ rbk-modem --listen unix:s --scenario bad.toml; echo $?
| rbk-modem: bad.toml:2: 0/1: expected hex bytes, two digits each, with optional blanks between them; 00*8 for eight of 00
| 1
$ rbk-modem --listen unix:s --scenario ./none; echo $?
| rbk-modem: ./none: expected a file that can be read: No such file or directory
| 1
$ for file in . pipe /dev/zero; do rbk-modem --listen unix:s --scenario $file; done; echo $?
| rbk-modem: .: expected a regular file
| rbk-modem: pipe: expected a regular file
| rbk-modem: /dev/zero: expected a regular file
| 1
$ rbk-modem --listen unix:file; echo $?
| rbk-modem: file: something that isn't a socket lies there
| 1
$ flock held.lock rbk-modem --listen unix:held; echo $?
| rbk-modem: held: a server listens there already
| 1
$ rbk-modem --listen unix:linked; echo $?
| rbk-modem: linked.lock: something that isn't a lock lies there
| 1
$ rbk-modem --listen unix:none/s; echo $?
| rbk-modem: none/s: No such file or directory
| 1
$ rbk-modem --listen unix:$(printf %0108d 0) 2>&1 | tr -d 0
| rbk-modem: : a socket's path has 1 to 17 bytes
$ rbk-modem --listen unix:s --at file; echo $?
| rbk-modem: file: something that isn't a link lies there
| 1
$ rbk-modem --listen unix:s --at link; echo $?
| rbk-modem: link: a link to file lies there, which isn't this program's to replace
| 1
$ flock held.lock rbk-modem --listen unix:s --at held; echo $?
| rbk-modem: held: a server listens there already
| 1
$ rbk-modem --listen unix:s --listen qmux:link; echo $?
| rbk-modem: link: a link to file lies there, which isn't this program's to replace
| 1
$ rbk-modem --listen unix:s --at s; echo $?
| rbk-modem: s: given twice; each carrier and the terminal's link need a place of their own
| 1
$ rbk-modem --listen unix:s --ledger none/ledger; echo $?
| rbk-modem: none/ledger: No such file or directory
| 1
$ rbk-modem --listen s; echo $?
| --listen: expected unix:PATH, qrtr or qmux:PATH, not s
| Run with --help for more information.
| 1
$ rbk-modem; echo $?
| --listen is required
| Run with --help for more information.
| 1
$ rbk-modem --listen unix:s --colour; echo $?
| The following argument was not expected: --colour
| Run with --help for more information.
| 1
$ test "$(cat file)" = precious && test -h link && ! test -e "$RBK_HOME" && ! test -e s

## A state directory that can't be had is worked with
$ touch file
$ rbk-modem --listen unix:s --state file; echo $?
| rbk-modem: file: Not a directory
| 1
$ rbk-modem --listen unix:s --state file/"$(printf '\033[1m')"; echo $?
| rbk-modem: file/\x1B[1m: Not a directory
| 1
$ rbk-modem --listen unix:s --state /proc/modem/state; echo $?
| rbk-modem: /proc/modem: No such file or directory
| 1
$ ls s s.lock 2> ../none; echo $?
| 2

## A signal doesn't end a start that waits for room for its "ready"
$ mkfifo full && exec 3<> full && head -c 65536 /dev/zero >&3 && { rbk-modem --listen unix:s >&3 & } && timeout 20 sh -c 'until test -d "$RBK_HOME"; do sleep 0.01; done'; kill $!; END
| 0

## Without standard output its "ready" goes into the first file that it opens
$ rbk-modem --listen unix:s >&- & AWAIT_READER; test -s s.lock; echo $?; kill $!; END
| 1
| 0

## A signal doesn't end a server, its socket stays, or rules that never matched aren't named
# A script's background jobs ignore SIGINT, and may have inherited that of SIGHUP
$ printf '[[fault]]\nservice="extended"\nmessage=3\naction="silent"\n[[fault]]\nservice="extended"\nnth=9\naction="silent"\n' > s.toml
$ rbk-modem --listen unix:s --scenario s.toml > out & AWAIT_READY; AWAIT_READER; kill -TERM $!; END
| rbk-modem: s.toml:1: the fault rule for extended never matched
| rbk-modem: s.toml:5: the fault rule for extended never matched often enough: 1 of 9 times
| 0
$ rbk-modem --listen unix:s > out & AWAIT_READY; kill -INT $!; END
| 0
$ env --default-signal=HUP rbk-modem --listen unix:s > out & AWAIT_READY; kill -HUP $!; END
| 0
$ env --ignore-signal=HUP rbk-modem --listen unix:s > out & AWAIT_READY; kill -HUP $!; AWAIT_READER; kill -TERM $!; END
| 0

## A living server's socket is taken over, or a dead one's isn't
# Whoever may open the folder can lock it, and delays nobody
$ exec 9<.; flock 9; rbk-modem --listen unix:s > out & AWAIT_READY; rbk-modem --listen unix:s; echo $?; AWAIT_READER; kill -KILL $!; { wait $!; } 2> none || true
| rbk-modem: s: a server listens there already
| 1
$ test -S s || exit 1; rbk-modem --listen unix:s > out & AWAIT_READY; AWAIT_READER; kill -TERM $!; END
| 0
