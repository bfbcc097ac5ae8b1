# What people see of the host: state directory, variables, closed streams, rbk-prop, spoiled files.

== The state directory: RBK_HOME, else XDG_STATE_HOME where it is a whole path, else HOME; an empty variable is none
$ sh RBK_HOME=a XDG_STATE_HOME=$PWD/b HOME=c rbk-prop set persist.x 1; find . -name persist.x
- ./a/properties/kept/persist.x
$ sh RBK_HOME= XDG_STATE_HOME=$PWD/b HOME=c rbk-prop set persist.x 1; find b -name persist.x
- b/rbk/properties/kept/persist.x
$ sh RBK_HOME= XDG_STATE_HOME=b HOME=c rbk-prop set persist.x 1; find c -name persist.x
- c/.local/state/rbk/properties/kept/persist.x
$ sh echo >file; RBK_HOME=file XDG_STATE_HOME=$PWD/b rbk-prop get persist.x
E rbk: file: Not a directory
exit 1
$ sh RBK_HOME=file rbk 5 5 | tail -n 1
- Modem SAR DSI: 0
E rbk: file: Not a directory

== What is wrong with a variable is told in one line each, and the command goes on where it can; what can't be written is given up
$ sh RBK_TRACE= RBK_LOGCAT= RBK_SCENARIO= RBK_QMI_TIMEOUT_SCALE=0.5 RBK_MODEM=embedded rbk 5 5 | tail -n 1
- Modem SAR DSI: 0
$ sh for scale in 0 -1 2s inf nan; do RBK_QMI_TIMEOUT_SCALE=$scale rbk 5 5 | tail -n 1; done
- Modem SAR DSI: 0
- Modem SAR DSI: 0
- Modem SAR DSI: 0
- Modem SAR DSI: 0
- Modem SAR DSI: 0
E rbk: RBK_QMI_TIMEOUT_SCALE=0: expected a number above 0; taking 1
E rbk: RBK_QMI_TIMEOUT_SCALE=-1: expected a number above 0; taking 1
E rbk: RBK_QMI_TIMEOUT_SCALE=2s: expected a number above 0; taking 1
E rbk: RBK_QMI_TIMEOUT_SCALE=inf: expected a number above 0; taking 1
E rbk: RBK_QMI_TIMEOUT_SCALE=nan: expected a number above 0; taking 1
$ sh RBK_TRACE=. RBK_LOGCAT=. rbk 5 5 | tail -n 1
- Modem SAR DSI: 0
E rbk: RBK_LOGCAT=.: Is a directory
E rbk: RBK_TRACE=.: Is a directory
$ sh RBK_TRACE=/dev/full RBK_LOGCAT=/dev/full rbk 5 5 | tail -n 1
- Modem SAR DSI: 0
E rbk: RBK_LOGCAT: No space left on device; given up
E rbk: RBK_TRACE: No space left on device; given up
$ sh mkfifo pipe; RBK_TRACE=pipe rbk 5 5 | tail -n 1
- Modem SAR DSI: 0
E rbk: RBK_TRACE=pipe: nobody reads it
$ sh printf %04096d >full; ulimit -f 8; RBK_TRACE=full RBK_LOGCAT=full rbk 5 5 | tail -n 1
- Modem SAR DSI: 0
E rbk: RBK_LOGCAT: File too large; given up
E rbk: RBK_TRACE: File too large; given up
$ sh mkfifo gone; exec 3<>gone 4>gone 3>&-; RBK_LOGCAT=stderr RBK_QMI_TIMEOUT_SCALE=word rbk 5 5 2>&4 | tail -n 1
- Modem SAR DSI: 0
$ sh exec 3<>gone 4>gone 3>&-; RBK_LOGCAT=stderr rbk 5 5 >&4 2>&4
exit 141
$ sh RBK_MODEM=real rbk 5 5 | tail -n 1
- Modem SAR DSI: -1
E rbk: RBK_MODEM: expected embedded, unix:PATH or qrtr, not "real"
$ sh RBK_SCENARIO=file RBK_MODEM=unix: rbk 5 5 | tail -n 1
- Modem SAR DSI: -1
E rbk: RBK_SCENARIO is for the embedded modem; ignored with RBK_MODEM=unix:
E rbk: RBK_MODEM: expected embedded, unix:PATH or qrtr, not "unix:"
$ sh RBK_MODEM=unix:. rbk 5 5 | tail -n 1
- Modem SAR DSI: -1
E rbk: RBK_MODEM: .: Connection refused
$ sh RBK_MODEM=unix:$(printf %0120d) rbk 5 5 | tail -n 1
- Modem SAR DSI: -1
E rbk: RBK_MODEM: 000000000000000000000000000000000000000000000000000000000000000000000000000000000000000000000000000000000000000000000000: a socket's path has 1 to 107 bytes

== A closed stream's number goes to no file: the trace and the log get their own lines, and the streams' text goes nowhere
$ sh RBK_TRACE=trace RBK_LOGCAT=log RBK_QMI_TIMEOUT_SCALE=word rbk 4 1 0 6853 >&-
E rbk: RBK_QMI_TIMEOUT_SCALE=word: expected a number above 0; taking 1
$ sh RBK_TRACE=trace RBK_LOGCAT=log RBK_QMI_TIMEOUT_SCALE=word rbk 4 1 0 6853 2>&- | grep -c 'data len'
- 1
$ sh RBK_TRACE=trace RBK_LOGCAT=log RBK_QMI_TIMEOUT_SCALE=word rbk 4 1 0 6853 <&- >&- 2>&-
$ sh grep -c ' svc=0xFFE4 ' trace; ! grep -v ' svc=0xFFE4 ' trace && ! grep -v '^[37] ' log
- 6

== rbk-prop reads, writes, forgets and lists; its third word is a value, whatever it begins with
$ sh rbk-prop get persist.x
- 
$ sh rbk-prop get persist.x 7
- 7
$ sh rbk-prop set persist.x -5; rbk-prop get persist.x 7
- -5
$ sh rbk-prop set persist.x -v; rbk-prop get persist.x
- -v
$ sh rbk-prop set persist.x --; rbk-prop get persist.x
- --
$ sh rbk-prop set persist.x -- --help; rbk-prop get persist.x
- --help
$ sh rbk-prop set persist.x ''; rbk-prop get persist.x; rbk-prop get persist.x other
- 
- other
$ sh rbk-prop get persist.y -1d
- -1d
$ sh rbk-prop set ro.y 1; rbk-prop set debug.z '= \'
$ sh rbk-prop set ro.y 2
E rbk: ro.y is set already, and can be set once
exit 1
$ sh rbk-prop list
- debug.z== \
- persist.x=
- ro.y=1
$ sh rbk-prop unset ro.y && rbk-prop unset ro.y && rbk-prop set ro.y 2 && rbk-prop list
- debug.z== \
- persist.x=
- ro.y=2
$ sh rbk-prop set persist.x "$(printf '1\n2')"
E rbk: persist.x: a value has no line ends
exit 1
$ sh rbk-prop set persist.x "$(printf '1\r')"
E rbk: persist.x: a value has no line ends
exit 1
$ sh rbk-prop set persist.x $(printf %0256d); rbk-prop set persist.x $(printf %0255d); rbk-prop list | tail -n 2
- persist.x=000000000000000000000000000000000000000000000000000000000000000000000000000000000000000000000000000000000000000000000000000000000000000000000000000000000000000000000000000000000000000000000000000000000000000000000000000000000000000000000000000000000000000
- ro.y=2
E rbk: persist.x: a value has at most 255 bytes, not 256
$ sh rbk-prop 2>&1
- A subcommand is required
- Run with --help for more information.
exit 1
$ sh rbk-prop put x 2>&1
- A subcommand is required
- Run with --help for more information.
exit 1
$ sh rbk-prop set persist.x 2>&1
- VALUE is required
- Run with --help for more information.
exit 1
$ sh rbk-prop --help | head -n 1
- Reads and writes the properties of this host, which rbk asks for.
$ sh rbk-prop list >/dev/full
E rbk: standard output: No space left on device
exit 1
$ sh rbk-prop get ro.y >/dev/full
E rbk: standard output: No space left on device
exit 1

== Names that are refused touch nothing
$ sh for name in ../persist.x persist./x .. .new.abc 'persist. x' "$(printf 'a\nb')"; do rbk-prop set "$name" 1; done
E rbk: ../persist.x: a property's name has letters, digits and .-_@: behind a letter or a digit
E rbk: persist./x: a property's name has letters, digits and .-_@: behind a letter or a digit
E rbk: ..: a property's name has letters, digits and .-_@: behind a letter or a digit
E rbk: .new.abc: a property's name has letters, digits and .-_@: behind a letter or a digit
E rbk: persist. x: a property's name has letters, digits and .-_@: behind a letter or a digit
E rbk: a
E b: a property's name has letters, digits and .-_@: behind a letter or a digit
exit 1
$ sh rbk-prop get a/b
E rbk: a/b: a property's name has letters, digits and .-_@: behind a letter or a digit
exit 1
$ sh rbk-prop unset ../persist.x
E rbk: ../persist.x: a property's name has letters, digits and .-_@: behind a letter or a digit
exit 1
$ sh rbk-prop set $(printf %0256d) 1; ls
E rbk: a property's name has at most 255 bytes, not 256
$ sh rbk-prop set $(printf %0255d) 1 && rbk-prop set persist.radio.ssr_count_@:-9 1 && ls state
- properties

== Files that people wrote, or spoiled
$ sh mkdir -p state/properties/kept && cd state/properties/kept && printf 9 >ro.a; printf '9\n' >ro.b; printf '9\0x' >ro.c; printf '9\n\n' >ro.d; : >ro.e
$ sh rbk-prop list
- ro.a=9
- ro.b=9
- ro.c=9
- ro.d=9
- 
- ro.e=
$ sh printf %0257d >state/properties/kept/ro.f; rbk-prop get ro.f
E rbk: state/properties/kept/ro.f: expected at most 255 bytes
exit 1
$ sh mkdir state/properties/kept/ro.g; rbk-prop get ro.g
E rbk: state/properties/kept/ro.g: Is a directory
exit 1
$ sh rbk-prop set persist.x 1; umask 077; rbk-prop set persist.y 1; umask 002; rbk-prop set persist.z 1; stat -c '%a %n' state/properties/kept/persist.[yz]
- 600 state/properties/kept/persist.y
- 664 state/properties/kept/persist.z
$ sh rm -r state/properties; echo >state/properties
$ sh rbk-prop get persist.x
E rbk: state/properties: Not a directory
exit 1
$ sh rbk-prop get debug.x
E rbk: state/properties: Not a directory
exit 1
$ sh rbk-prop set persist.x 1
E rbk: state/properties: Not a directory
exit 1
