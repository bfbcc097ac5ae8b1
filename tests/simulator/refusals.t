# What a scenario file may not say: a file, behind "!" the line and the beginning of the words that refuse it, a blank
# line. The file begins right behind that, and may itself begin with one.

[modem
! 1: 


[modme]
! 2: unknown key modme in the scenario: expected modem, nv, efs, at, indication, fault

[modem]
boot = 1
! 2: unknown key boot in [modem]: expected services, boot_ms, restart_ms, servers, client_ids

[modem]
servers = { nas = { version = 256 } }
! 2: version: expected a whole number from 0 to 255

[modem]
client_ids = 1001
! 2: client_ids: expected a whole number from 1 to 1000

[modem]
boot_ms = -1
! 2: boot_ms: expected a whole number from 0 to 86400000

[modem]
boot_ms = 1.5
! 2: boot_ms: expected a whole number

[modem]
services = 'vs'
! 2: services: expected a list

[modem]
services = ['vs',
'vx']
! 3: services: expected one of extended, vs, nas, uim, sar, pdc, diag

nv = 1
! 1: [nv]: expected a table

[nv]
"0/1" = '1'
! 2: 0/1: expected hex bytes, two digits each

[nv]
"0/1" = '0 1'
! 2: 0/1: expected hex bytes

[nv]
"0/1" = 'GG'
! 2: 0/1: expected hex bytes

[nv]
"0/1" = '00*'
! 2: 0/1: expected hex bytes

[nv]
"0/1" = '00*0'
! 2: 0/1: expected hex bytes

[nv]
"0/1" = '00*8A1'
! 2: 0/1: expected hex bytes

[nv]
"0/1" = '00*18446744073709551617'
! 2: 0/1: expected hex bytes

[nv]
"0/1" = 'A1 00*424'
! 2: 0/1: expected at most 424 bytes

[nv]
"0/1" = 1
! 2: 0/1: expected hex text or { fill = byte, size = bytes }

[nv]
"0/1" = { fill = 1, size = 425 }
! 2: 0/1.size: expected a whole number from 0 to 424

[nv]
"0/1" = { fill = 256, size = 1 }
! 2: 0/1.fill: expected a whole number from 0 to 255

[nv]
"0/1" = { size = 1 }
! 2: 0/1: expected the key fill

[nv]
"0/1" = { fill = 1, size = 1, from = 1 }
! 2: unknown key from in 0/1

[nv]
"2/551" = '01'
! 2: 2/551: expected "<sub>/<item>" with sub 0 or 1

[nv]
"0/7233" = '01'
! 2: 0/7233: expected "<sub>/<item>"

[nv]
"0/1x" = '01'
! 2: 0/1x: expected "<sub>/<item>"

[nv]
"550" = '01'
! 2: 550: expected "<sub>/<item>"

[efs]
"/file" = '01'
! 2: /file: expected "<sub>:<path>"

[efs]
"2:/file" = '01'
! 2: 2:/file: expected "<sub>:<path>"

[efs]
"0:/a/../../b" = '01'
! 2: 0:/a/../../b: expected "<sub>:<path>"

[stats.sub2]
! 1: unknown key sub2 in [stats]: expected sub0, sub1

[stats.sub0]
82x = ''
! 2: 82x: expected a parameter's number

[stats.sub0]
82 = { rsrp = 1 }
! 2: unknown key rsrp in 82: expected version, version_ssmr

[stats.sub0]
82 = { pci = 65536 }
! 2: pci: expected a whole number from 0 to 65535

[stats.sub0]
82 = { rsrp_rx0 = 1e39 }
! 2: rsrp_rx0: expected a number that 32 bits can hold

[stats.sub0]
83 = { version = 1 }
! 2: 83: expected bytes

[debug_info]
record = { fill = 0, size = 501 }
! 2: record.size: expected a whole number

[debug_info]
logs = [65536]
! 2: logs: expected a whole number from 0 to 65535

[efs]
"0:/a/b/c" = '01'
"0:a//b" = '02'
! 3: 0:a//b: expected the path of a file that

[efs]
"0:/policyman" = '01'
! 2: 0:/policyman: expected the path of a file that neither

[at]
AT = 1
! 2: AT: expected a text

[diag]
mask = 1
! 2: unknown key mask in [diag]: expected remote_mask, mpss_up, response, stream

[[diag.stream]]
kind = 'logs'
bytes = ''
every_ms = 5
! 2: kind: expected log or event

[[diag.stream]]
kind = 'log'
bytes = ''
every_ms = 0
! 4: every_ms: expected a whole number from 1

[[diag.response]]
request = '7C'
packets = [ { size = 1 } ]
! 3: packets: expected the key fill

[sar]
dsi = 21
! 2: dsi: expected a whole number from 0 to 20

[nas]
networks = [ { mcc = 262 } ]
! 2: networks: expected the key mnc

[[indication]]
service = 'diag'
message = 1
bytes = ''
! 1: [[indication]]: expected a service of QMI

[[indication]]
service = 'vs'
message = 1
! 1: [[indication]]: expected the key bytes

[[indication]]
service = 'vs'
message = 65536
bytes = ''
! 3: message: expected a whole number

[[indication]]
service = 'vs'
message = 1
bytes = ''
every_ms = 0
! 1: [[indication]]: expected

[[fault]]
action = 'silent'
! 1: [[fault]]: expected the key service

[[fault]]
service = 'vs'
! 1: [[fault]]: expected the key action

[[fault]]
service = 'vs'
action = 'explode'
! 3: action: expected one of silent, delay, error

[[fault]]
service = 'vs'
action = 'twice'
! 3: action: expected one of silent, delay, error

[[fault]]
service = 'vs'
on = 'indication'
action = 'error'
code = 1
! 4: action: expected one of

[[fault]]
service = 'vs'
on = 'answer'
action = 'silent'
! 3: on: expected request or indication

[[fault]]
service = 'vs'
action = 'delay'
! 1: [[fault]]: expected the key ms

[[fault]]
service = 'vs'
action = 'error'
! 1: [[fault]]: expected the key code

[[fault]]
service = 'vs'
action = 'error'
code = 70000
! 4: code: expected a whole number

[[fault]]
service = 'vs'
action = 'result'
code = 1
! 3: action: expected result with the service

[[fault]]
service = 'vs'
action = 'refuse'
code = 1
! 3: action: expected refuse with the service

[[fault]]
service = 'extended'
action = 'pull'
slot = 1
! 3: action: expected pull with the service

[[fault]]
service = 'uim'
action = 'pull'
! 1: [[fault]]: expected the key slot

[[fault]]
service = 'uim'
action = 'pull'
slot = 6
! 4: slot: expected a whole number from 1 to 5

[[fault]]
service = 'vs'
qmi_id = 1
action = 'silent'
! 1: [[fault]]: expected qmi_id with

[[fault]]
service = 'vs'
nth = 0
action = 'silent'
! 3: nth: expected a whole number

[[fault]]
service = 'vs'
nth = 1
from = 1
action = 'silent'
! 1: [[fault]]: expected nth or from

[[fault]]
service = 'vs'
action = 'silent'
ms = 1
! 4: unknown key ms in [[fault]]

[[fault]]
service = 'vs'
call = 'send'
action = 'error'
code = 1
! 1: [[fault]]: expected call with

[[fault]]
service = 'diag'
call = 'sent'
action = 'error'
code = 1
! 3: call: expected one of lsm_init

[[fault]]
service = 'diag'
call = 'send'
action = 'silent'
! 4: action: expected error beside call

[[fault]]
service = 'diag'
message = 7
action = 'silent'
! 1: [[fault]]: expected no message

[[fault]]
service = 'diag'
action = 'indicate'
indication = 5
bytes = ''
! 1: [[fault]]: expected no indication

[[fault]]
service = 'nas'
action = 'silent'
then = [ { bytes = '' } ]
! 4: then: expected the key indication, where there is no answer

[[fault]]
service = 'nas'
action = 'silent'
then = [ { indication = 1, bytes = '', early = true } ]
! 4: unknown key early in then: expected indication, bytes, after_ms

[[fault]]
service = 'nas'
action = 'raw'
bytes = ''
then = [ { bytes = '', early = true } ]
! 5: then: expected an early indication, at the latest after the rule's ms

[[fault]]
service = 'nas'
action = 'raw'
bytes = ''
ms = 5
then = [ { indication = 1, bytes = '', early = true, after_ms = 6 } ]
! 6: then: expected an early indication

[[fault]]
service = 'diag'
action = 'silent'
then = [ { bytes = '', indication = 1 } ]
! 4: unknown key indication in then: expected bytes, after_ms, processor

[[fault]]
service = 'nas'
on = 'indication'
action = 'raw'
bytes = ''
ms = 5
! 6: unknown key ms in [[fault]]

[[fault]]
service = 'diag'
action = 'raw'
bytes = { fill = 0, size = 16385 }
! 4: bytes.size: expected a whole number from 0 to 16384

[[fault]]
service = 'extended'
action = 'error'
code = 0
! 1: [[fault]]: expected a code other

[[pdc.config]]
id = 'A1'
[[pdc.config]]
id = 'a1'
! 3: [[pdc.config]]: expected each id

[at]
"A\rB" = ''
! 2: [at]: expected commands of 1 to 2048 bytes

[nv]
'0/1' = ''
'0/1' = ''
! 3: expected each key and table once

[nv]
'0/1' = ''
'00/0001' = ''
! 3: 00/0001: expected each one once, and 0/1 is the same

[efs]
'0://a' = ''
'0:/a' = ''
! 3: 0:/a: expected each one once, and 0://a is the same

[stats.sub0]
082 = ''
82 = ''
! 3: 82: expected each one once, and 082 is the same

[[card]]
[card.apdu]
'80 CA' = ''
80ca = ''
! 4: 80ca: expected each one once


[@nv]
! 2: expected TOML

[[[card]]
! 1: expected TOML

[modem]
services = [}]
[nv]
! 2: expected TOML

[nv]
ä = 1
! 2: expected letters outside ASCII in texts and comments alone

[at]
A = 'x'ä
! 2: expected letters

[at]
A = 1.'ä'
! 2: expected letters

[at]
A = 1[{'ä'}]
! 2: expected letters

[at]
A = [
1='ä']
! 3: expected letters

[at]
A = '''''''ä'
! 2: expected letters

[at]
A = "\ä"
! 2: expected no letter outside ASCII behind

[at]
A = """\ 
 
ä"""
! 4: expected no letter outside ASCII behind

[at]
A = '
'
! 2: expected the end of the text in its line

[modem]
boot_ms = 1979-05-27
! 2: boot_ms: expected a whole number

[stats.sub0]
4294967296 = ''
! 2: 4294967296: expected a parameter's number

[stats.sub0]
82 = { fill = 1, size = 3001 }
! 2: 82.size: expected a whole number from 0 to 3000

[pdc]
report = '.'
! 2: report: expected a regular file

[pdc]
report = '/dev/zero'
! 2: report: expected a regular file

[pdc]
indications = 3
! 2: unknown key indications

[pdc]
report = 'none.xml'
! 2: report: expected a file that can be read: No such file or directory

[pdc.sub0]
active = '0'
! 2: active: expected hex bytes

[pdc.sub2]
! 1: unknown key sub2 in [pdc]

[[pdc.config]]
type = 1
! 1: [[pdc.config]]: expected the key id

[[pdc.config]]
id = ''
! 1: [[pdc.config]]: expected an id of 1 byte or more

[[card]]
state = 'gone'
! 2: state: expected absent, present or error

[[card]]
eid = '8904'
! 1: [[card]]: expected an eid of 16 bytes

[[card]]
channels_held = 4
! 2: channels_held: expected a whole number from 0 to 3

[[card]]
[[card]]
[[card]]
[[card]]
[[card]]
[[card]]
! 6: [[card]]: expected at most 5 slots

[[card]]
[card.apdu]
'8x' = '00'
! 3: 8x: expected hex bytes

[[card]]
[card.apdu]
'' = '00'
! 3: : expected a command of 1 byte or more

[[card]]
power = 'up'
! 2: unknown key power

[[fault]]
service = 'diag'
call = 'send'
on = 'indication'
action = 'silent'
! 1: [[fault]]: expected no on or prefix beside call

[[fault]]
service = 'vs'
action = 'delay'
ms = 86400001
! 4: ms: expected a whole number from 0 to 86400000

[[nas]]
! 1: [nas]: expected a table

[nas]
networks = [ { mcc = 1000, mnc = 1 } ]
! 2: mcc: expected a whole number from 0 to 999

[diag]
mpss_up = 1
! 2: mpss_up: expected true or false
