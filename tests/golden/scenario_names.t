# Scenarios that come with the programs: how they are found and listed. The programs look beside themselves.

== A name is a file of the current folder, else one of those that come with the programs; a path is a path
$ sh RBK_SCENARIO=service-missing rbk 5 5 | tail -n 1; RBK_SCENARIO=service-missing.toml rbk 5 5 | tail -n 1
- Modem SAR DSI: -1
- Modem SAR DSI: -1
$ sh mkdir weak-signal && printf '[sar]\ndsi = 7\n' >service-missing; RBK_SCENARIO=service-missing rbk 5 5 | tail -n 1
- Modem SAR DSI: 0
$ sh RBK_HOME=fresh RBK_SCENARIO=service-missing rbk 5 5 | tail -n 1; RBK_SCENARIO=weak-signal rbk 9 0 0 | grep -c 'rx_valid: 3'
- Modem SAR DSI: 7
- 1
$ sh RBK_SCENARIO=./slow-boot rbk 5 5 | tail -n 1
- Modem SAR DSI: -1
E rbk: ./slow-boot: expected a file that can be read: No such file or directory
$ sh RBK_SCENARIO=none rbk 5 5 2>said | tail -n 1; sed 's, /.*/share/, FOLDER/,' said
- Modem SAR DSI: -1
- rbk: none: expected a file that can be read: No such file or directory; nor is it in FOLDER/rbk/scenarios
$ sh rbk-modem --listen unix:s --scenario none 2>said; echo $?; sed 's, /.*/share/, FOLDER/,' said
- 1
- rbk-modem: none: expected a file that can be read: No such file or directory; nor is it in FOLDER/rbk/scenarios

== They are listed by name, each with its first line
$ sh rbk-modem --list-scenarios >list; echo $?; sort -c list; grep 'card-pulled\|three-ch' list
- 0
- card-pulled                The card is pulled out while the slot is being switched to it
- three-channels             A card has three logical channels, and others hold them all
$ sh rbk-modem --list-scenarios --listen unix:s | cmp - list; rbk-modem --list-scenarios >/dev/full
E rbk-modem: standard output: No space left on device
exit 1
