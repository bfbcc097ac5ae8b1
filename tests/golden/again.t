# Scenarios that rbk-trace makes: a command that talks to the modem is run once more with the one that repeats its talk.

== All groups, from a modem that isn't the built-in one; on the screen is everything
| [modem]
| restart_ms = 20
| [nv]
| "0/6853" = "00*16 02"
| [efs]
| "0:/nv/item_files/modem/velmor/rf_ant_port_config" = "02 00 00 00 01 00 00 00 02 00 00 00"
| "0:/nv/item_files/modem/antenna/ant_tx_config" = "01 00 00 00 04 00 00 00 05 00 00 00 00 00 00 00"
| "0:/policyman/device_config.xml" = { fill = 0x41, size = 1500 }
| [debug_info]
| record = "00 01 02 00 00 00 00 00 00 00"
| [nas]
| scan_ms = 30
| networks = [ { mcc = 310, mnc = 7, status = 1, name = "Far", radio = 8 } ]
| [stats.sub0]
| 82 = { earfcn = 1850, pci = 7, rx_valid = 15, rsrp_rx0 = -93.5 }
| 44 = "01 0C 00 00 00"
| [sar]
| dsi = 4
| [[card]]
| state = "absent"
| [[card]]
| state = "present"
| eid = "89049032999451234512345678901235"
| eid_after = 2
| [pdc]
| indication_ms = 50
| [pdc.sub0]
| active = "0102030405"
| [[pdc.config]]
| id = "0102030405"
| type = 1
| description = "Net One"
| version = 0x05010203
| size = 4711
$ rbk-prop unset persist.vendor.radio.adb_log_shell
$ again rbk 3 1
$ again rbk 3 4
$ again rbk 4 4 0 /policyman/device_config.xml
$ put modem/nv/0/550 abc
$ again rbk 4 1 0 550
$ remove modem/nv/0/550
$ again rbk 4 3 0 550
$ again rbk 5 2 0
$ again rbk 5 5
$ again rbk 5 10 1 1
$ again rbk 5 10 3 1
$ again rbk 7 1 0
$ again rbk 7 1 1
$ again rbk 9 0 0
$ again rbk 9 31 2
env RBK_TEST_DIVISOR=10
$ again rbk 10 1 1

== An answer that doesn't come, one that comes after the next request, twice, or as an error
| [pdc]
| indication_ms = 100
| [[fault]]
| service = "extended"
| nth = 1
| action = "raw"
| ms = 380
| bytes = "01 0400 00000000 02 0400 BC010000 10 2602 00*4 A1000000 00*542"
| then = [ { bytes = "01 0400 00000000 02 0400 BC010000 10 2602 00*4 B2000000 00*542", after_ms = 20 } ]
| [[fault]]
| service = "extended"
| nth = 2
| action = "silent"
| [[fault]]
| service = "extended"
| nth = 3
| action = "raw"
| bytes = "01 0400 00000000 02 0400 BC010000 10 2602 00*550"
| then = [ { bytes = "01 0400 00000000 02 0400 BC010000 10 2602 EE*550" }, { indication = 3, bytes = "01 0400 07000000" } ]
| [[fault]]
| service = "nas"
| action = "raw"
| ms = 10
| bytes = "02 0200 0100"
| [[fault]]
| service = "extended"
| qmi_id = 4
| action = "result"
| code = -5
env RBK_QMI_TIMEOUT_SCALE=0.1
$ rbk-prop unset persist.vendor.radio.adb_log_shell
$ again rbk 3 3 1 4 0x5
$ again rbk 4 4 0 /policyman/device_config.xml
$ again rbk 6 2 1 0 38 2
$ again rbk 11 0
$ again rbk 11 5 1
$ again rbk 12 0 1
$ again rbk 12 1 1
env RBK_TEST_DIVISOR=10
$ again rbk 10 1 1

== An indication that comes early, twice, with other bytes, or before the next request; two threads trace in no order
| [pdc]
| indication_ms = 7
| [[fault]]
| service = "pdc"
| on = "indication"
| nth = 1
| action = "early"
| [[fault]]
| service = "pdc"
| on = "indication"
| nth = 2
| action = "twice"
| [[fault]]
| service = "pdc"
| on = "indication"
| nth = 3
| action = "raw"
| bytes = "01 0200 3000"
| [[fault]]
| service = "extended"
| action = "indicate"
| bytes = "01 0400 07000000"
$ rbk-prop set persist.vendor.radio.adb_log_shell 8
$ again rbk 10 1 1

== Diag: several packets, each at its time, and none; what several threads trace has no order
| [diag]
| [[diag.response]]
| request = "7C"
| packets = [ { bytes = "7C 01 02 03", after_ms = 50 }, { bytes = "7C 09" } ]
| [[diag.response]]
| request = "4B"
| packets = [ { fill = 0x4B, size = 4096 }, { bytes = "4B 01 02", after_ms = 20 } ]
$ again rbk 5 0 0 0 10000 0x7C
$ again rbk 5 0 1 0 10000 0x7C
$ again rbk 5 0 1 0 10000 0x4B
