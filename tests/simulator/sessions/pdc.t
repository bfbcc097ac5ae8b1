# Configurations: an acknowledgement, and behind it an indication with the outcome in its TLV 1.

## Selections of the subscriptions are mixed up, or not stored
[pdc]
indication_ms = 1
config = [ { id = "A1" }, { id = "C1C2", type = 0 } ]
[pdc.sub0]
active = "A1"
pending = "BB"
[pdc.sub1]
> pdc 22 01: w1 10: w9
< pdc r22 02: w0
< pdc i22 01: h0 10: w9 11: 01A1 12: 01BB
> pdc 22 01: w1 11: w1
< pdc r22 02: w0
< pdc i22 01: h0
> pdc 23 01: w1 01A1 11: w1
< pdc r23 02: w0
< pdc i23 01: h0
> pdc 22 01: w1 11: w1
< pdc r22 02: w0
< pdc i22 01: h0 12: 01A1
> pdc 27 01: w1 12: w1
< pdc r27 02: w0
< pdc i27 01: h0
= pdc/sub1/active A1
= pdc/sub1/pending none
# Once more, with nothing pending; then off, and nothing left to switch off
> pdc 27 01: w1 12: w1
< pdc r27 02: w0
< pdc i27 01: h0
> pdc 2B 01: w1 11: w0
< pdc r2B 02: w0
< pdc i2B 01: h0
> pdc 2B 01: w1 11: w0
< pdc r2B 02: w0
< pdc i2B 01: h26
= pdc/sub0/pending BB
# The platform's is one for all
> pdc 27 01: w0
< pdc r27 02: w0
< pdc i27 01: h25
> pdc 23 01: w0 02C1C2 11: w1
< pdc r23 02: w0
< pdc i23 01: h0
> pdc 27 01: w0
< pdc r27 02: w0
< pdc i27 01: h0
= pdc/platform/active C1C2
# Who asks for it hears of refreshes
> pdc 20 11: 01
< pdc r20 02: w0
> pdc 27 01: w0
< pdc r27 02: w0
< pdc i2F 01: w0
< pdc i2F 01: w1
< pdc i27 01: h0
> pdc 20 11: 00
< pdc r20 02: w0
> pdc 27 01: w0
< pdc r27 02: w0
< pdc i27 01: h0
> pdc 2E 01: w1 10: w3
< pdc r2E 02: w0
< pdc i2E 01: h0 10: w3
---
[pdc.sub1]
active = "EE"
= pdc/sub1/active A1
= pdc/sub0/pending BB

## A selection that can't come into force is lost
[pdc]
indication_ms = 1
[pdc.sub0]
pending = "BB"
$ mkdir -p pdc/sub0/active/in_the_way
> pdc 27 01: w1
< pdc r27 02: w0
< pdc i27 01: h3
! STATE/pdc/sub0/active: Is a directory
= pdc/sub0/pending BB

## A switch that is still under way lets the next one pass, for good, or holds up the other subscription's
[pdc]
indication_ms = 1
settle_ms = 60000
[pdc.sub0]
active = "A1"
[pdc.sub1]
active = "B1"
> pdc 2B 01: w1 11: w0
< pdc r2B 02: w0
< pdc i2B 01: h0
> pdc 23 01: w1 01 A1 11: w0
< pdc r23 02: w0
< pdc i23 01: h25
> pdc 27 01: w1 12: w0
< pdc r27 02: w0
< pdc i27 01: h25
> pdc 2B 01: w1 11: w0
< pdc r2B 02: w0
< pdc i2B 01: h25
> pdc 27 01: w1 12: w1
< pdc r27 02: w0
< pdc i27 01: h0
---
[pdc]
indication_ms = 1
settle_ms = 1
> pdc 2B 01: w1 11: w1
< pdc r2B 02: w0
< pdc i2B 01: h0
$ sleep 0.1
> pdc 23 01: w1 01 B1 11: w1
< pdc r23 02: w0
< pdc i23 01: h0

## An id that isn't listed can't be selected though it is active, pending or was active
[pdc]
indication_ms = 1
config = []
[pdc.sub0]
active = "EE"
pending = "BB"
> pdc 23 01: w1 01BB
< pdc r23 02: w0
< pdc i23 01: h0
> pdc 23 01: w1 01EE
< pdc r23 02: w0
< pdc i23 01: h0
> pdc 23 01: w1 01BB
< pdc r23 02: w0
< pdc i23 01: h16
> pdc 2B 01: w1
< pdc r2B 02: w0
< pdc i2B 01: h0
$ rm pdc/sub0/pending
> pdc 23 01: w1 01EE
< pdc r23 02: w0
< pdc i23 01: h0

## Information is that of another configuration; what is in use is deleted
[pdc]
indication_ms = 1
config = [ { id = "A1", description = "Net", version = 0x05010203, size = 4711 }, { id = "C1C2", type = 0 } ]
[pdc.sub0]
active = "A1"
> pdc 28 01: w1 01A1
< pdc r28 02: w0
< pdc i28 01: h0 11: w4711 12: 03 "Net" 13: w0x05010203
> pdc 28 01: w0 01A1
< pdc r28 02: w0
< pdc i28 01: h16
> pdc 2A 01: w1
< pdc r2A 02: w0
< pdc i2A 01: h0 11: w0x05010203 12: w4711 13: 03 "Net"
> pdc 2A 01: w5
< pdc r2A 02: w0
< pdc i2A 01: h16
> pdc 25 01: w1 11: 01A1
< pdc r25 02: w0
< pdc i25 01: h25
> pdc 25 01: w1 11: 01A2
< pdc r25 02: w0
< pdc i25 01: h16
> pdc 25 01: w0
< pdc r25 02: w0
< pdc i25 01: h0
> pdc 25 01: w1
< pdc r25 02: w0
< pdc i25 01: h0
> pdc 2A 01: w0
< pdc r2A 02: w0
< pdc i2A 01: h16
> pdc 2C 01: w1 01A1 10: w5
< pdc r2C 02: w0
< pdc i2C 01: h0 10: w5 11: w-1 12: h10 "<NvData/>" 0A
> pdc 2C 01: w1 01A2
< pdc r2C 02: w0
< pdc i2C 01: h16

## A configuration that comes in frames is there too early, too often, or with too many bytes
[pdc]
indication_ms = 1
config = [ { id = "A1" } ]
# There already; no room for its length
> pdc 26 01: w1 01A1 w10 h4 11*4
< pdc r26 02: w0
< pdc i26 01: h41
> pdc 26 01: w1 01D1 w0x7FFFFFFF h4 11*4
< pdc r26 02: w0
< pdc i26 01: h2
> pdc 26 01: w1 01D1 w10 h4 11*4
< pdc r26 02: w0
< pdc i26 01: h0 11: w4 12: w6
# Too many bytes: from the start again
> pdc 26 01: w1 01D1 w10 h7 11*7
< pdc r26 02: w0
< pdc i26 01: h0 13: 01
> pdc 26 01: w1 01D1 w10 h4 11*4
< pdc r26 02: w0
< pdc i26 01: h0 11: w4 12: w6
> pdc 28 01: w1 01D1
< pdc r28 02: w0
< pdc i28 01: h16
> pdc 26 01: w1 01D1 w10 h6 11*6
< pdc r26 02: w0
< pdc i26 01: h0 11: w10 12: w0
> pdc 28 01: w1 01D1
< pdc r28 02: w0
< pdc i28 01: h0 11: w10 12: 00 13: w0

## A broken request is carried out, or read past its end
# No type, a short one, an unknown one, a third subscription
> pdc 22
< pdc r22 02: h1 h17
> pdc 27 01: 01
< pdc r27 02: h1 h1
> pdc 22 01: w2
< pdc r22 02: h1 h48
> pdc 22 01: w1 11: w2
< pdc r22 02: h1 h48
# Ids: past their end, beyond the room, without a count
> pdc 23 01: w1 09A1
< pdc r23 02: h1 h1
> pdc 23 01: w1 7D 01*125
< pdc r23 02: h1 h1
> pdc 28 01: 010000
< pdc r28 02: h1 h1
> pdc 25 01: w1 11: 0901
< pdc r25 02: h1 h1
> pdc 25 01: w1 11:
< pdc r25 02: h1 h1
# Frames: past their end, without a head, of no id
> pdc 26 01: w1 0101 w9 h8 01
< pdc r26 02: h1 h1
> pdc 26 01: w1 0101 w9
< pdc r26 02: h1 h1
> pdc 26 01: w1 00 w9 h1 01
< pdc r26 02: h1 h1
> pdc 29
< pdc r29 02: h1 h71

## A file of a person's is taken for an id
[pdc]
indication_ms = 1
$ printf '%0125d' 0 > pdc/sub0/active
> pdc 22 01: w1
< pdc r22 02: w0
< pdc i22 01: h0

## Loads and configurations have room without end, or none after their clients and deletions
[pdc]
indication_ms = 0
config = [ { id = "A1" }, { id = "C1", type = 0 } ]
* 1 16
2> pdc 26 01: w1 02 h% w10 h4 5A*4
2< pdc r26 02: w0
2< pdc i26 01: h0 11: w4 12: w6
*
> pdc 26 01: w1 02 h300 w10 h4 5A*4
< pdc r26 02: w0
< pdc i26 01: h2
2x
> pdc 26 01: w1 02 h300 w10 h4 5A*4
< pdc r26 02: w0
< pdc i26 01: h0 11: w4 12: w6
* 1 253
> pdc 26 01: w1 02 h% w0 h0
< pdc r26 02: w0
< pdc i26 01: h0 11: w0 12: w0
*
> pdc 26 01: w1 02 h254 w0 h0
< pdc r26 02: w0
< pdc i26 01: h2
> pdc 26 01: w1 02 h300 w10 h6 5A*6
< pdc r26 02: w0
< pdc i26 01: h0 11: w10 12: w0
> pdc 25 01: w1 11: 02 h7
< pdc r25 02: w0
< pdc i25 01: h0
> pdc 26 01: w1 02 h254 w0 h0
< pdc r26 02: w0
< pdc i26 01: h0 11: w0 12: w0

## A chunk of the list is another client's, or misses one where others were deleted
# 27 of one type among two of the other: a chunk is full before its end, and the next one has nothing behind it
[pdc]
indication_ms = 0
[[pdc.config]]
id = "01"
type = 0
* 10 36
[[pdc.config]]
id = "%"
*
[[pdc.config]]
id = "02"
type = 0
: FIRST w1 0110 w1 0111 w1 0112 w1 0113 w1 0114 w1 0115 w1 0116 w1 0117 w1 0118 w1 0119 w1 0120 w1 0121
: SECOND w1 0122 w1 0123 w1 0124 w1 0125 w1 0126 w1 0127 w1 0128 w1 0129 w1 0130 w1 0131 w1 0132 w1 0133 w1 0134
> pdc 24 10: w7 11: w1
< pdc r24 02: w0
< pdc i24 01: h0 10: w7 11: 19 FIRST SECOND 12: 01
2> pdc 24 11: w1
2< pdc r24 02: w0
2< pdc i24 01: h0 11: 19 FIRST SECOND 12: 01
> pdc 25 01: w1 11: 0110
< pdc r25 02: w0
< pdc i25 01: h0
> pdc 25 01: w1 11: 0136
< pdc r25 02: w0
< pdc i25 01: h0
> pdc 24 11: w1 12: 01
< pdc r24 02: w0
< pdc i24 01: h0 11: 01 w1 0135 12: 00
> pdc 24 11: w1 12: 01
< pdc r24 02: w0
< pdc i24 01: h0 11: 00 12: 00
2> pdc 24 11: w1 12: 01
2< pdc r24 02: w0
2< pdc i24 01: h0 11: 01 w1 0135 12: 00
> pdc 24 11: w0
< pdc r24 02: w0
< pdc i24 01: h0 11: 02 w0 0101 w0 0102 12: 00
> pdc 24 11: w9
< pdc r24 02: w0
< pdc i24 01: h0 11: 00 12: 00
# Exactly a chunk of the type
> pdc 25 01: w1 11: 0135
< pdc r25 02: w0
< pdc i25 01: h0
> pdc 26 01: w1 0110 w0 h0
< pdc r26 02: w0
< pdc i26 01: h0 11: w0 12: w0
> pdc 24 11: w1
< pdc r24 02: w0
< pdc i24 01: h0 11: 19 w1 0111 w1 0112 w1 0113 w1 0114 w1 0115 w1 0116 w1 0117 w1 0118 w1 0119 w1 0120 w1 0121 SECOND w1 0110 12: 00

## A report loses a frame, or its end
[pdc]
indication_ms = 0
$ printf '%032768d%032768dc' 0 0 | tr 0 a > ../diff.xml
---
[pdc]
indication_ms = 0
report = "diff.xml"
config = [ { id = "A1" } ]
> pdc 2C 01: w1 01A1 10: w5
< pdc r2C 02: w0
< pdc i2C 01: h0 10: w5 11: w0 12: h32768 61*32768
< pdc i2C 01: h0 10: w5 11: w1 12: h32768 61*32768
< pdc i2C 01: h0 10: w5 11: w-1 12: h1 63
