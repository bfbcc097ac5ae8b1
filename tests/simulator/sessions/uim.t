# Cards: slots that are switched, channels, and requests that make no sense.
: ISD_R A0000005591010FFFFFFFF8900000100
: USIM 0207020B0000 10 A0000000871002FF49FFFF89020000FF 00 03030A 01030A
: RESET 80E2910007BF3404820205E000
: EID 89049032123451234512345678901235
# What the status says of a card: its state, an error, how many applications
: PRESENT 01000000 00 01
: EMPTY 01000000 00 00
: POWERLESS 02000000 01 00
: ABSENT 00000000 00 00
: BROKEN 02000000 00 00

## An EID is told of a slot that stands on its card, has no power or no eUICC, or of an eUICC that has just started
card = [ {}, { eid = "EID", eid_after = 2 } ]
> uim 65 01: 02
< uim r65 02: h1 h25
> uim 7A 01: 02 w1 w3
< uim r7A 02: w0
> uim 65 01: 02
< uim r65 02: w0
> uim 65 01: 02
< uim r65 02: w0
> uim 65 01: 02
< uim r65 02: w0 10: 10 EID
> uim 65 01: 01
< uim r65 02: h1 h25
> uim 2F
< uim r2F 02: w0 10: h0 h-1 h256 h-1 02 PRESENT USIM PRESENT USIM
> uim 30 01: 02
< uim r30 02: w0
> uim 65 01: 02
< uim r65 02: h1 h25
> uim 2F 10: 01
< uim r2F 02: w0 10: h0 h-1 h-1 h-1 02 PRESENT USIM POWERLESS 15: h0 h-1 h-1 h-1 02 PRESENT USIM POWERLESS
# Without a switch file the slot stays on its side, and the eUICC starts anew
> uim 31 01: 02
< uim r31 02: w0
> uim 65 01: 02
< uim r65 02: w0
= card/2/eid_waits "1"

## A slot is put on an eUICC that it doesn't have, or another one with it
card = [ { eid = "EID" }, {} ]
> uim 7A 01: 02 w3 w3
< uim r7A 02: h1 h94
> uim 65 01: 01
< uim r65 02: h1 h25

## The switch file doesn't count at the next power-up, or counts before
card = [ {}, { eid = "EID", eid_after = 0 } ]
$ mkdir -p efs/1/nv/item_files/modem/uim/uimdrv && printf '\0\1' > efs/1/nv/item_files/modem/uim/uimdrv/esim_enable
> uim 65 01: 02
< uim r65 02: h1 h25
> uim 31 01: 02
< uim r31 02: w0
> uim 65 01: 02
< uim r65 02: w0 10: 10 EID
$ printf '\0\0\0\0' > efs/1/nv/item_files/modem/uim/uimdrv/esim_enable
> uim 31 01: 02
< uim r31 02: w0
> uim 65 01: 02
< uim r65 02: h1 h25

## Indices name applications that there aren't
# Of a card without power
> uim 30 01: 01
< uim r30 02: w0
> uim 2F
< uim r2F 02: w0 10: h-1 h-1 h256 h-1 02 POWERLESS PRESENT USIM
# Of an eUICC without a profile
$ rm card/2/profiles
> uim 7A 01: 02 w1 w3
< uim r7A 02: w0
> uim 2F
< uim r2F 02: w0 10: h-1 h-1 h-1 h-1 02 POWERLESS EMPTY
# Cards that are pulled and broken, by hand, with a line feed behind the word
$ echo absent > card/1/state; echo gone > card/2/state; echo physical > card/2/side
> uim 2F
< uim r2F 02: w0 10: h-1 h-1 h-1 h-1 02 ABSENT BROKEN
$ echo present > card/1/state; echo up > card/1/power; rm card/2/*
> uim 2F
< uim r2F 02: w0 10: h0 h-1 h-1 h-1 01 PRESENT USIM
$ rm card/1/*
> uim 2F
< uim r2F 02: w0 10: h-1 h-1 h-1 h-1 00
> uim 30 01: 01
< uim r30 02: h1 h48

## A eUICC goes with the card in the tray, or a slot's side with the modem
card = [ {}, { state = "absent", eid = "EID", eid_after = 0 } ]
> uim 2F
< uim r2F 02: w0 10: h0 h-1 h-1 h-1 02 PRESENT USIM ABSENT
> uim 7A 01: 02 w1 w3
< uim r7A 02: w0
> uim 2F
< uim r2F 02: w0 10: h0 h-1 h256 h-1 02 PRESENT USIM PRESENT USIM
---
card = [ { state = "absent" } ]
> uim 2F
< uim r2F 02: w0 10: h0 h-1 h256 h-1 02 PRESENT USIM PRESENT USIM
> uim 65 01: 02
< uim r65 02: w0 10: 10 EID
> uim 7A 01: 02 w1 w1
< uim r7A 02: w0
> uim 2F
< uim r2F 02: w0 10: h0 h-1 h-1 h-1 02 PRESENT USIM ABSENT

## A fourth channel is opened, or one that was closed isn't
> uim 42 01: 02 10: 10 ISD_R
< uim r42 02: h1 h25
> uim 7A 01: 02 w1 w3
< uim r7A 02: w0
> uim 42 01: 02 10: 10 ISD_R
< uim r42 02: w0 10: 01 11: 9000 12: 14 6F128410 ISD_R
> uim 3F 01: 02 10: 10 ISD_R
< uim r3F 02: w0 10: 02 11: 9000 12: 14 6F128410 ISD_R
2> uim 42 01: 02 10: 10 ISD_R
2< uim r42 02: w0 10: 03 11: 9000 12: 14 6F128410 ISD_R
> uim 42 01: 02 10: 10 ISD_R
< uim r42 02: h1 h2 11: 6A81
> uim 3F 01: 02 11: 02
< uim r3F 02: w0 11: 9000
> uim 3F 01: 02 11: 02
< uim r3F 02: h1 h48
> uim 42 01: 02 10: 10 ISD_R
< uim r42 02: w0 10: 02 11: 9000 12: 14 6F128410 ISD_R
# With its client goes its channel alone; with the power go all
2x
> uim 42 01: 02 10: 10 ISD_R
< uim r42 02: w0 10: 03 11: 9000 12: 14 6F128410 ISD_R
> uim 42 01: 02 10: 10 ISD_R
< uim r42 02: h1 h2 11: 6A81
> uim 30 01: 02
< uim r30 02: w0
> uim 31 01: 02
< uim r31 02: w0
> uim 42 01: 02 10: 10 ISD_R
< uim r42 02: w0 10: 01 11: 9000 12: 14 6F128410 ISD_R

## A channel that others hold is opened, or free once there was no power
card = [ {}, { eid = "EID", channels_held = 2 } ]
> uim 7A 01: 02 w1 w3
< uim r7A 02: w0
> uim 31 01: 02
< uim r31 02: w0
> uim 42 01: 02 10: 10 ISD_R
< uim r42 02: w0 10: 03 11: 9000 12: 14 6F128410 ISD_R
> uim 42 01: 02 10: 10 ISD_R
< uim r42 02: h1 h2 11: 6A81

## Another card is pulled, behind the request's answer, or one that there isn't
[[fault]]
service = "uim"
nth = 2
action = "pull"
slot = 1
[[fault]]
service = "uim"
nth = 3
action = "pull"
slot = 3
> uim 2F
< uim r2F 02: w0 10: h0 h-1 h256 h-1 02 PRESENT USIM PRESENT USIM
> uim 2F
< uim r2F 02: w0 10: h-1 h-1 h256 h-1 02 ABSENT PRESENT USIM
> uim 2F
< uim r2F 02: w0 10: h-1 h-1 h256 h-1 02 ABSENT PRESENT USIM
= card/1/state "absent"

## A reset leaves profiles, or deletes them twice
> uim 7A 01: 02 w1 w3
< uim r7A 02: w0
> uim 3B 01: 02 02: h13 RESET 10: 01
< uim r3B 02: h1 h48
= card/2/profiles 989420103254769810F2
> uim 3B 01: 02 02: h13 RESET
< uim r3B 02: w0 10: h8 BF34038001009000
= card/2/profiles none
> uim 3B 01: 02 02: h13 RESET
< uim r3B 02: w0 10: h8 BF34038001019000
> uim 3B 01: 02 02: h2 80CA
< uim r3B 02: w0 10: h2 6D00

## A card's answers are those of another command
# A long command's name goes on in a folder, which the shorter one's file doesn't stand in the way of
: FIFTY 5555555555555555555555555555555555555555555555555555555555555555555555555555555555555555555555555555
[[card]]
eid = "EID"
[card.apdu]
"80 e2" = "A1 B2 C3"
"FIFTYFIFTY" = "01"
"FIFTYFIFTYAB" = "02"
> uim 7A 01: 01 w3
< uim r7A 02: w0
> uim 3B 01: 01 02: h2 80E2
< uim r3B 02: w0 10: h3 A1B2C3
> uim 3B 01: 01 02: h100 55*100
< uim r3B 02: w0 10: h1 01
> uim 3B 01: 01 02: h101 55*100 AB
< uim r3B 02: w0 10: h1 02
> uim 3B 01: 01 02: h1024 55*1024
< uim r3B 02: w0 10: h2 6D00

## A request that makes no sense is carried out
> uim 7A 01: 02 w1 w3
< uim r7A 02: w0
> uim 42 01: 02 10: 10 ISD_R
< uim r42 02: w0 10: 01 11: 9000 12: 14 6F128410 ISD_R
> uim 66 01: 02
< uim r66 02: h1 h71
# Slots 0 and 3, in a word, none
> uim 30 01: 00
< uim r30 02: h1 h48
> uim 31 01: 03
< uim r31 02: h1 h48
> uim 30 01: w2
< uim r30 02: h1 h1
> uim 65
< uim r65 02: h1 h17
# Types: for more slots than there are, cut, none, an unknown one behind a good one, an eSIM where there is none
> uim 7A 01: 03 w1 w1 w1
< uim r7A 02: h1 h48
> uim 7A 01: 02 w1 h1
< uim r7A 02: h1 h1
> uim 7A 01:
< uim r7A 02: h1 h1
> uim 7A 01: 02 w1 w7
< uim r7A 02: h1 h48
> uim 7A 01: 01 w3
< uim r7A 02: h1 h94
# Applications: none, of nobody, cut, with more behind; nothing to close
> uim 42 01: 02
< uim r42 02: h1 h17
> uim 42 01: 02 10: 02 A000
< uim r42 02: h1 h16 11: 6A82
> uim 42 01: 02 10: 10 A0
< uim r42 02: h1 h1
> uim 42 01: 02 10: 0F ISD_R
< uim r42 02: h1 h1
> uim 3F 01: 02
< uim r3F 02: h1 h17
# Commands: none, empty, cut, a cut count, too long
> uim 3B 01: 02 10: 01
< uim r3B 02: h1 h17
> uim 3B 01: 02 02: h0
< uim r3B 02: h1 h1
> uim 3B 01: 02 02: h9 80
< uim r3B 02: h1 h1
> uim 3B 01: 02 02: 09
< uim r3B 02: h1 h1
> uim 3B 01: 02 02: h1025 80*1025
< uim r3B 02: h1 h1
# The channel has outlived all of that
> uim 3B 01: 02 02: h1 80 10: 01
< uim r3B 02: w0 10: h2 6D00
