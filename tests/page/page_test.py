"""page_test.py FOLDER: what a browser makes of the pages of rbk-trace, which stands in FOLDER beside rbk. One line a
case; ends with 0 where all hold. The talk is a real one, of rbk and its modem, but for a network's hostile name."""
import contextlib
import os
import re
import subprocess
import sys
import tempfile

from browser import Browser

BIN = os.path.abspath(sys.argv[1])
SCENARIO = """
[nas]
scan_ms = 10
networks = [ { mcc = 262, mnc = 1, status = 2, name = "%s", radio = 8 } ]
[[fault]]
service = "extended"
message = 2
prefix = "01 01"
action = "silent"
[[fault]]
service = "pdc"
on = "indication"
nth = 2
action = "early"
[[fault]]
service = "sar"
message = 2
action = "error"
code = 52
"""
COMMANDS = ["4 1 0 550", "12 0", "9 7 1", "4 1 1 550", "5 5", "5 10 3 1", "9 8 1", "10 1 1"]
HOSTILE = (b"<script>window.hacked=1</script>'\"&amp;<b>bold</b></style></pre></noscript>"
           b"<img src=x onerror=window.hacked=1>javascript:window.hacked=1 "
           b"\xff\xc2\x9b\x1b[31m \xe2\x80\xae\xe2\x80\xa8\xef\xbb\xbf ]]>--> ${window.hacked=1}")
SEEN = ("<script>window.hacked=1</script>'\"&amp;<b>bold</b></style></pre></noscript>"
        "<img src=x onerror=window.hacked=1>javascript:window.hacked=1 "
        "\\xFF\\xC2\\x9B\\x1B[31m \\u{202E}\\u{2028}\\u{FEFF} ]]>--> ${window.hacked=1}")
FILE_NAME = "\"'><img src=x onerror=window.hacked=1>&amp;javascript:\xff.trace".encode("latin-1")


def run(*command, **variables):
    return subprocess.run([os.path.join(BIN, command[0]), *command[1:]], timeout=30, check=True, capture_output=True,
                          env={**os.environ, **variables})


def record(folder):
    """A trace of all commands, one after the other."""
    name = "Z" * len(HOSTILE)
    scenario = os.path.join(folder, "phone.toml")
    trace = os.path.join(folder, "talk")
    with open(scenario, "w") as file:
        file.write(SCENARIO % name)
    for command in COMMANDS:
        run("rbk", *command.split(), RBK_HOME=folder + "/home", RBK_TRACE=trace, RBK_SCENARIO=scenario,
            RBK_MODEM="embedded", RBK_QMI_TIMEOUT_SCALE="0.2")
    with open(trace) as file:
        text = file.read()
    assert name.encode().hex().upper() in text
    return text.replace(name.encode().hex().upper(), HOSTILE.hex().upper()).splitlines()


def repeated(lines, count):
    """The talk again and again, half a second after its end, until it has so many messages."""
    times = [float(line.split(" ", 1)[0]) for line in lines]
    span = times[-1] - times[0] + 0.5
    later = [f"{time + each * span:.6f} {line.split(' ', 1)[1]}" for each in range(count // len(lines) + 1)
             for time, line in zip(times, lines)]
    return later[:count]


class Lab:
    def __init__(self, browser, folder):
        self.browser = browser
        self.folder = folder
        self.talk = record(folder)
        self.page = self.write(self.talk)

    def write(self, lines, *arguments, name=b"trace"):
        """The page of a trace."""
        trace = os.path.join(os.fsencode(self.folder), name)
        with open(trace, "w") as file:
            file.write("\n".join(lines) + "\n")
        page = os.path.join(self.folder, "page%d.html" % len(os.listdir(self.folder)))
        with open(page, "wb") as file:
            file.write(run("rbk-trace", "--html", *arguments, trace).stdout)
        return page

    def lines(self, *arguments):
        """What rbk-trace says of the talk: pairs of direction and service."""
        self.write(self.talk)
        text = run("rbk-trace", *arguments, self.folder + "/trace").stdout.decode(errors="replace")
        return [line.split()[1:3] for line in text.split("\n")[:-1]]

    @contextlib.contextmanager
    def opened(self, page, script=True, **screen):
        """In the browser, which asks for nothing else meanwhile and has nothing to complain about."""
        self.browser.emulate(**screen)
        self.browser.script(script)
        self.browser.requests()
        self.browser.log("browser")
        self.browser.open(page)
        yield self.browser
        asked = set(self.browser.requests()) - {"about:blank", "file://" + page}
        assert not asked, asked
        said = self.browser.log("browser")
        assert not said, said


# ---- Cases ----

def arrows_lead_from_client_to_service(lab):
    with lab.opened(lab.page) as browser:
        rows = browser.js("""
            const middle = element => { const box = element.getBoundingClientRect(); return box.left + box.width / 2; };
            const names = [...document.querySelectorAll('.names b')].map(each => [middle(each), each.innerText]);
            const client = middle(document.querySelector('.lanes .client'));
            return [...document.querySelectorAll('.m')].map(row => {
                const line = row.querySelector('.a').getBoundingClientRect();
                const head = middle(row.querySelector('.a span'));
                const service = names.find(each => Math.abs(each[0] - line.right) < 2);
                const direction = line.right - head < 8 ? '>' : head - line.left < 8 ? '<' : '?';
                return [Math.abs(client - line.left) < 2 ? direction : '?', service ? service[1] : '?'];
            });""")
    assert rows == lab.lines(), rows


def faults_and_gaps_are_seen(lab):
    with lab.opened(lab.page) as browser:
        colours = browser.js("""
            const colours = selector => [...new Set([...document.querySelectorAll('.m' + selector)].map(each =>
                getComputedStyle(each.querySelector('.a')).color))];
            return [colours('.f'), colours('.q:not(.f)'), colours('.p:not(.f)'), colours('.i:not(.f)')];""")
        assert len({each[0] for each in colours}) == 4 and all(len(each) == 1 for each in colours), colours
        gaps = browser.js("""
            return [...document.querySelectorAll('.gap')].map(each => [each.innerText, each.offsetHeight])""")
        assert gaps and all(re.fullmatch(r"\d+\.\d s", text) and height >= 20 for text, height in gaps), gaps
        label = browser.js("return [...document.querySelectorAll('.f')].map(each => each.textContent).join()")
        for word in ("unanswered", "failed: device not ready (52)", "before the answer"):
            assert word in label, (word, label)
        summary = browser.js("return document.querySelector('header').innerText")
        assert re.search(r"\d+ messages.*%d runs of rbk.*\d faults.*\d s" % len(COMMANDS), summary), summary


def a_click_opens_fields_and_bytes(lab):
    seen = """
        return [...document.querySelectorAll('.d')].filter(each => each.checkVisibility())
            .map(each => each.innerText)"""
    for arguments, first, bytes_shown in (
        ((), "0000  ·· ·· ·· ··", "0230  ··"),
        (("--show-private",), "0000  01 04 00 00 00 00 00 02  ........", "08 3A 45  ......:E"),
    ):
        with lab.opened(lab.write(lab.talk, *arguments)) as browser:
            answer = browser.js("""
                return [...document.querySelectorAll('.p')].find(each => each.textContent.includes('NV read')).id""")
            assert browser.js(seen) == []
            browser.click("#%s summary" % answer)
            opened = browser.js(seen)
            assert len(opened) == 1, opened
            for part in "data_len_all", first, bytes_shown:
                assert part in opened[0], opened
            browser.click("#%s a" % answer)
            assert browser.js("return document.activeElement.parentNode.matches('.q[open]')")
            assert len(browser.js(seen)) == 2


def keys_move_open_and_search(lab):
    focused = "return [...document.querySelectorAll('.m')].indexOf(document.activeElement.parentNode)"
    with lab.opened(lab.page) as browser:
        browser.press("j", "j", "\ue015", "k", "\ue007")  # down, enter
        assert browser.js(focused) == 1
        assert browser.js("return [...document.querySelectorAll('.m')].map(each => each.open).indexOf(true)") == 1
        assert browser.js("return getComputedStyle(document.activeElement).outlineStyle") == "solid"
        browser.press("n")
        at = browser.js(focused)
        assert browser.js("return document.activeElement.parentNode.matches('.f')") and at > 1
        browser.press("/", *"geteid")
        browser.wait("document.querySelector('output').value.startsWith('0 of')")
        browser.press(*["\ue003"] * 3, *" EID")
        browser.wait("document.querySelector('output').value.startsWith('4 of')")
        browser.press("\ue00c")
        browser.wait("document.querySelector('output').value === ''")
        browser.click("#faults")
        shown = browser.js("return [...document.querySelectorAll('.m')].filter(each => each.checkVisibility()).length")
        assert shown == len(lab.lines("--errors")), shown


def filters_of_the_command_line_hold(lab):
    with lab.opened(lab.write(lab.talk, "--service", "nas")) as browser:
        assert browser.js("return document.querySelectorAll('.m').length") == len(lab.lines("--service", "nas")) > 0


def hostile_bytes_stay_text(lab):
    talk = repeated(lab.talk, 2000)  # some stand in the page for later
    page = lab.write(talk, name=FILE_NAME)
    with open(page, "rb") as file:
        file.read().decode()
    for script in True, False:
        with lab.opened(page, script) as browser:
            browser.wait("document.querySelectorAll('.m').length === 2000", 30)
            names = browser.js("""
                return [...document.querySelectorAll('dt')].filter(each => each.textContent == 'network_description')
                    .map(each => each.nextSibling.textContent)""")
            assert len(names) == sum(HOSTILE.hex().upper() in line for line in talk) > 50, len(names)
            assert set(names) == {'"' + SEEN + '"'}, set(names)
            title = os.fsdecode(FILE_NAME).encode("utf-8", "replace").decode().replace("?", "\\xFF")
            assert browser.js("return document.querySelector('h1').textContent").endswith(title)
            elements = browser.js("""
                return [...document.querySelectorAll('img, script, style, b b')].map(each => each.localName)""")
            assert elements == ["style", "script"], elements
            assert browser.js("return window.hacked") is None


def all_is_there_without_a_script(lab):
    with lab.opened(lab.write(repeated(lab.talk, 2000)), script=False) as browser:
        assert browser.js("return document.querySelectorAll('.m').length") == 2000
        browser.click(".m summary")
        assert browser.js("return document.querySelector('.d').checkVisibility()")
        assert not browser.js("return document.querySelector('form').checkVisibility()")


def a_phone_is_wide_enough(lab):
    with lab.opened(lab.page, width=390) as browser:
        wide = browser.js("""
            document.querySelectorAll('details').forEach(each => { each.open = true; });
            const wide = [...document.querySelectorAll('body *')]
                .filter(each => each.getBoundingClientRect().right > 390.5);
            return [document.documentElement.scrollWidth, ...wide.map(each => each.outerHTML.slice(0, 80))];""")
        assert wide == [390], wide


def colours_suit_dark_light_and_print(lab):
    for scheme, media, is_dark in ("light", "screen", False), ("dark", "screen", True), ("dark", "print", False):
        with lab.opened(lab.page, scheme=scheme, media=media) as browser:
            seen = browser.js("""
                document.querySelectorAll('details').forEach(each => { each.open = true; });
                const linear = v => v <= 10 ? v / 3294.6 : ((v / 255 + .055) / 1.055) ** 2.4;
                const light = colour => {
                    const [r, g, b] = colour.match(/[\\d.]+/g).map(Number);
                    return .2126 * linear(r) + .7152 * linear(g) + .0722 * linear(b);
                };
                const behind = element => {
                    const colour = getComputedStyle(element).backgroundColor;
                    return /^rgb\\(/.test(colour) ? light(colour) : behind(element.parentElement);
                };
                const contrast = element => {
                    const pair = [behind(element), light(getComputedStyle(element).color)].sort((a, b) => a - b);
                    return (pair[1] + .05) / (pair[0] + .05);
                };
                const texts = 'h1, h2, header p, .time, .t *, .gap, dt, dd, a, .names b, mark, pre';
                const poor = [...document.querySelectorAll(texts)].filter(each => contrast(each) < 4.5);
                return { paper: behind(document.body), poor: poor.map(each => each.outerHTML),
                         top: getComputedStyle(document.querySelector('.top')).position,
                         form: document.querySelector('form').checkVisibility(),
                         opened: [...document.querySelectorAll('.d')].every(each => each.checkVisibility()) };""")
            assert (seen["paper"] < 0.05) == is_dark and (is_dark or seen["paper"] > 0.95), seen
            assert not seen["poor"], seen["poor"]
            assert seen["top"] == ("static" if media == "print" else "sticky"), seen
            assert seen["form"] == (media != "print") and seen["opened"], seen


def a_long_talk_is_printed_whole(lab):
    with lab.opened(lab.write(repeated(lab.talk, 10000))) as browser:
        made = browser.js("""
            const made = () => document.querySelectorAll('.m').length;
            return [made(), dispatchEvent(new Event('beforeprint')), made()];""")
        assert made[0] < made[2] == 10000, made


def ten_thousand_messages(lab):
    page = lab.write(repeated(lab.talk, 10000))
    with lab.opened(page) as browser:
        ready = browser.js("return performance.getEntriesByType('navigation')[0].domContentLoadedEventEnd")
        browser.wait("document.querySelectorAll('.m').length === 10000", 60)
        click = browser.post("/execute/async", {"args": [], "script": """
            const row = document.querySelectorAll('.m')[5000];
            row.scrollIntoView();
            requestAnimationFrame(() => setTimeout(() => {
                const begin = performance.now();
                row.firstChild.click();
                requestAnimationFrame(() => setTimeout(() => arguments[0](performance.now() - begin)));
            }));"""})
        assert browser.js("return document.querySelectorAll('.m')[5000].open")
        return "ready after %.0f ms, a click %.0f ms, %.1f MB" % (ready, click, os.path.getsize(page) / 1e6)


CASES = [arrows_lead_from_client_to_service, faults_and_gaps_are_seen, a_click_opens_fields_and_bytes,
         keys_move_open_and_search, filters_of_the_command_line_hold, hostile_bytes_stay_text,
         all_is_there_without_a_script, a_phone_is_wide_enough, colours_suit_dark_light_and_print,
         a_long_talk_is_printed_whole, ten_thousand_messages]


def main():
    failed = 0
    with tempfile.TemporaryDirectory() as folder, Browser() as browser:
        lab = Lab(browser, folder)
        for case in CASES:
            name = case.__name__.replace("_", " ")
            try:
                print("ok      " + name + ": ".join(["", *filter(None, [case(lab)])]), flush=True)
            except Exception as error:
                failed += 1
                print("FAILED  %s: line %d: %s" % (name, error.__traceback__.tb_next.tb_lineno, error), flush=True)
    print("test-page: %d of %d cases hold" % (len(CASES) - failed, len(CASES)))
    return 1 if failed else 0


sys.exit(main())
