# rbk-modem installed elsewhere: what is in the folder beside it, whatever that is.

== The folder of scenarios goes with the program
$ sh mkdir -p usr/bin usr/share/rbk/scenarios; ln $(command -v rbk-modem) usr/bin 2>none || cp $(command -v rbk-modem) usr/bin; usr/bin/rbk-modem --list-scenarios
$ sh cd usr/share/rbk/scenarios; printf '#  A \033[2Jtable of \n# words\n' >b-long.toml; echo '[sar]' >a.toml; : >c.toml; mkdir d.toml; mkfifo e.toml; echo '# No' >f
$ sh usr/bin/rbk-modem --list-scenarios; ln -s none usr/share/rbk/scenarios/g.toml; usr/bin/rbk-modem --list-scenarios | wc -l
- a
- b-long  A \x1B[2Jtable of 
- c
- 3
$ sh rm -r usr/share/rbk/scenarios; : >usr/share/rbk/scenarios; usr/bin/rbk-modem --listen unix:s --scenario a 2>said; sed 's,in /.*/usr/,in USR/,' said
- rbk-modem: a: expected a file that can be read: No such file or directory; nor is it in USR/share/rbk/scenarios: Not a directory
$ sh rm -r usr/share/rbk; usr/bin/rbk-modem --list-scenarios 2>said; echo $?; sed 's, /.*/usr/, USR/,' said
- 1
- rbk-modem: USR/share/rbk/scenarios: No such file or directory
