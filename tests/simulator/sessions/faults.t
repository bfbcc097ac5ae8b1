# Rules, and indications that nobody asked for. Each action on each request of a command is the sweep's; here is what a
# rule matches, and in which order follow an answer, what follows it, and services that go and come.
: ECHO env 3: A1B2C3D4
: RESTART env 4: w2 @8 w31 w4 w0x1000 @512
: GOES env 0: w2 w0 w31 w0 @508

## A rule matches another message, request id, prefix, or what stands behind the data's end
[[fault]]
service = "extended"
message = 3
action = "error"
code = 1
[[fault]]
service = "extended"
qmi_id = 4
action = "error"
code = 2
[[fault]]
service = "extended"
prefix = "A1 B3"
action = "error"
code = 3
[[fault]]
service = "extended"
prefix = "A1 B2 C3 D4 00"
action = "error"
code = 4
[[fault]]
service = "extended"
on = "indication"
action = "silent"
[[fault]]
service = "vs"
action = "error"
code = 5
> extended 2 ECHO
< extended r2 env 0: A1B2C3D4
> extended 3 ECHO
< extended r3 env 1:
> extended 2 env 4: A1B2C3D4
< extended r2 env 2:
> extended 2 env 3: A1B3
< extended r2 env 3:
> extended 2 env 3: A1B2C3D400
< extended r2 env 4:

## Matches aren't counted for each rule, or the last rule that matches decides
[[fault]]
service = "extended"
nth = 2
action = "error"
code = 10
[[fault]]
service = "extended"
from = 3
action = "error"
code = -20
[[fault]]
service = "extended"
nth = 2
action = "error"
code = 30
> extended 2 ECHO
< extended r2 env 0: A1B2C3D4
> extended 2 ECHO
< extended r2 env 10:
> extended 2 ECHO
< extended r2 env -20:
> extended 2 ECHO
< extended r2 env -20:

## A result is put where none is, or over other bytes of the record
[[fault]]
service = "extended"
action = "result"
code = -5
> extended 2 env 2: 01 00 h10
< extended r2 env 0: @4 w3 @16 w-5 001E00 @444
> extended 2 env 1: w1 w10 w0
< extended r2 env 0: @4 w-5 @16 w3 001E00 @432
> extended 2 env 4: w2 @8 w35 w0
< extended r2 env 0: w2 w-5 w35 w0 @508
> extended 2 env 3: 01020304050607
< extended r2 env 0: 01020304050607
> extended 2 env 3: 01020304050607 @550
< extended r2 env 0: 01020304050607 @550

## What a rule leaves undone is done, or what it carries out isn't
[modem]
restart_ms = 1
[[fault]]
service = "extended"
nth = 1
action = "silent"
[[fault]]
service = "extended"
nth = 2
action = "error"
code = 1
[[fault]]
service = "extended"
nth = 3
action = "raw"
bytes = "05 01 00 A1"
[[fault]]
service = "extended"
nth = 4
action = "delay"
ms = 1
[[fault]]
service = "extended"
nth = 5
action = "result"
code = -5
[[fault]]
service = "extended"
nth = 6
action = "indicate"
bytes = "10 01 00 B2"
[[fault]]
service = "extended"
nth = 7
action = "refuse"
code = -28
[[fault]]
service = "extended"
nth = 8
action = "down"
> extended 2 env 2: 02 00 h1 @108 w1 @120 11
> extended 2 env 2: 02 00 h2 @108 w1 @120 11
< extended r2 env 1:
> extended 2 env 2: 02 00 h3 @108 w1 @120 11
< extended r2 05: A1
> extended 2 env 2: 02 00 h4 @108 w1 @120 11
< extended r2 env 0: @444
> extended 2 env 2: 02 00 h5 @108 w1 @120 11
< extended r2 env 0: @16 w-5 @444
> extended 2 env 2: 02 00 h6 @108 w1 @120 11
< extended r2 env 0: @444
< extended i2 10: B2
> extended 2 env 2: 02 00 h7 @108 w1 @120 11
< extended r2 env 0: @16 w-28 @444
> extended 2 env 2: 02 00 h8 @108 w1 @120 11
< - extended
< + extended
= nv/0/1 none
= nv/0/2 none
= nv/0/3 none
= nv/0/4 11
= nv/0/5 11
= nv/0/6 11
= nv/0/7 none
= nv/0/8 none

## A refusal stands elsewhere than a result, or in an answer that has none
[[fault]]
service = "extended"
action = "refuse"
code = -5
> extended 2 env 1: w1 w10 w0
< extended r2 env 0: @4 w-5 @432
> extended 2 env 4: w2 @8 w35 w0
< extended r2 env 0: w2 w-5 @508
> extended 2 env 3: 01020304050607
< extended r2 env 0: 01020304050607
= marks/nv_sync none

## A restart comes before the answer to its request
[modem]
restart_ms = 1
[[fault]]
service = "extended"
action = "delay"
ms = 20
> extended 2 RESTART
< extended r2 GOES
< - extended
< + extended

## What is put off is sent at once
[[fault]]
service = "extended"
action = "delay"
ms = 60000
[[fault]]
service = "pdc"
action = "indicate"
indication = 3
bytes = "11 01 00 A1"
[[fault]]
service = "nas"
on = "indication"
action = "delay"
ms = 60000
[pdc]
indication_ms = 60000
[nas]
scan_ms = 1
> extended 2 ECHO
> pdc 27 01: w1
< pdc r27 02: w0
> nas 85
< nas r85 02: w0
~ 4

## An indication in the place of another doesn't come when that would
[pdc]
indication_ms = 30
[[indication]]
service = "pdc"
message = 35
after_ms = 1
bytes = "10 01 00 A1"
[[fault]]
service = "pdc"
on = "indication"
message = 39
action = "indicate"
bytes = "11 01 00 B2"
> pdc 27 01: w1
< pdc r27 02: w0
< pdc i23 10: A1
< pdc i27 11: B2

## Outcomes and frames come before the answer that they follow
[modem]
restart_ms = 1
[pdc]
indication_ms = 1
[nas]
scan_ms = 1
networks = []
[[fault]]
service = "pdc"
nth = 1
action = "delay"
ms = 20
[[fault]]
service = "nas"
action = "delay"
ms = 20
[[fault]]
service = "pdc"
on = "indication"
nth = 2
action = "early"
[[fault]]
service = "pdc"
on = "indication"
nth = 3
action = "indicate"
indication = 9
bytes = "11 01 00 A1"
[[fault]]
service = "pdc"
on = "indication"
nth = 4
action = "indicate"
indication = 9
bytes = "11 01 00 B2"
also = true
[[fault]]
service = "pdc"
on = "indication"
nth = 5
message = 46
action = "silent"
[[fault]]
service = "pdc"
on = "indication"
nth = 5
action = "down"
> pdc 27 01: w1
< pdc r27 02: w0
< pdc i27 01: h0
> nas 85
< nas r85 02: w0
< nas i85 01: w0 10: h0
< nas i85 01: w1 10: h0
> pdc 27 01: w1 10: w1
< pdc i27 01: h0 10: w1
< pdc r27 02: w0
> pdc 27 01: w1 10: w2
< pdc r27 02: w0
< pdc i9 11: A1
> pdc 27 01: w1 10: w3
< pdc r27 02: w0
< pdc i9 11: B2
< pdc i27 01: h0 10: w3
> pdc 27 01: w1 10: w4
< pdc r27 02: w0
< - pdc
< + pdc

## What a rule sends beside its answer comes at another time, in another order, as another message, or as of the modem
[[fault]]
service = "sar"
nth = 1
action = "raw"
ms = 20
bytes = "02 0400 00*4"
then = [
  { indication = 9, bytes = "01 0100 B2", after_ms = 1 },
  { indication = 7, bytes = "01 0100 A1", early = true, after_ms = 20 },
]
[[fault]]
service = "sar"
nth = 2
action = "silent"
then = [ { indication = 9, bytes = "01 0100 C3", after_ms = 1 }, { indication = 8, bytes = "" } ]
[[fault]]
service = "sar"
nth = 3
action = "silent"
then = [ { indication = 9, bytes = "", after_ms = 60000 } ]
[[fault]]
service = "sar"
action = "raw"
ms = 60000
bytes = ""
then = [ { indication = 9, bytes = "" } ]
[[fault]]
service = "sar"
on = "indication"
action = "silent"
> sar 2
< sar i7 01: A1
< sar r2 02: w0
< sar i9 01: B2
> sar 2
< sar i8
< sar i9 01: C3
> sar 2
> sar 2
~ 3

## A service that is down answers, is told of twice, or comes up in the middle of a later restart
[modem]
restart_ms = 1000
[[fault]]
service = "sar"
nth = 1
action = "down"
> extended 2 ECHO
< extended r2 env 0: A1B2C3D4
> sar 2
> extended 2 RESTART
< - sar
< extended r2 GOES
< - extended
> sar 2
< lost
# By the first of the two restarts sar would be up before extended
< + extended
< + sar
> sar 2
< sar r2 02: w0 10: w0

## Indications that nobody asked for begin anew with each request, come to whoever asks another service, or by no rule
[[fault]]
service = "extended"
on = "indication"
message = 7
nth = 2
action = "twice"
[[indication]]
service = "extended"
message = 7
bytes = "01 01 00 A1"
[[indication]]
service = "extended"
message = 8
bytes = ""
after_ms = 60000
> sar 2
< sar r2 02: w0 10: w0
> extended 2 ECHO
< extended r2 env 0: A1B2C3D4
< extended i7 01: A1
> extended 2 ECHO
< extended r2 env 0: A1B2C3D4
2> extended 2 ECHO
2< extended r2 env 0: A1B2C3D4
2< extended i7 01: A1
2< extended i7 01: A1
~ 2

## What is put off for a client outlives it
[nas]
scan_ms = 60000
[[indication]]
service = "nas"
message = 7
bytes = ""
after_ms = 60000
[[fault]]
service = "extended"
action = "delay"
ms = 60000
2> nas 21
2> nas 85
2> extended 2 ECHO
2x
