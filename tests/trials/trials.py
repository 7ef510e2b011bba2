#!/usr/bin/env python3
"""Trials of tnl with decks that nobody has written: those of examples/ and tests/decks/, changed at random.

    tests/trials/trials.py build/bin/tnl [--decks 1000] [--rules 200] [--seed 1] [--jobs 2] [--from N] [--out FOLDER]

Each deck is checked (`tnl check`) and run (`tnl run --time-limit`) in a folder of its own, under limits of memory and
time. With --rules, as many more decks of which only words of `method:`, types of solve blocks and numbers are changed.
A deck depends on its number and the seed alone: --only N makes, shows and runs one again.

What counts as a fault (status 1 at the end):
    endless      a command that did not end when its time was over
    status       a status that the table of README.md does not have, or that nothing here can lead to (2, 4)
    crash        a signal, or the text of a program that came down
    memory       more memory than the limit; the system refuses only what is beyond twice as much
and what is told, to be looked at:
    unsaid       `tnl check` finds no error, and the run stops with a message that is not about numbers of its iteration
    diverged     the same with such a message
    alarm        `tnl check` finds an error, and the run completes with status 0
    refused      memory that the system did not give; a message and a status of the table
Each kind is told once for each message, with the number of decks; the decks are in FOLDER.
"""
import argparse
import concurrent.futures
import os
import pathlib
import random
import re
import resource
import shutil
import signal
import subprocess
import sys
import tempfile
import threading
import time

SOURCE = pathlib.Path(__file__).resolve().parents[2]
NUMBER = re.compile(r"^[-+]?(\d+\.?\d*|\.\d+)([eE][-+]?\d+)?[GMkKmunpf]?$")
EXTREMES = ["0", "-0", "1", "-1", "2", "1e308", "-1e308", "1e-308", "5e-324", "1e400", "-1e400", "nan", "inf", "-inf",
            "1e-30", "1e30", "1e9", "1e15", "1e-15", "2147483647", "2147483648", "-2147483648", "4294967296",
            "99999999999999999999", "1000000000", "1M", "1G", "1p", "1f", "0.1", "1e-9", "1.5", "-3", "20", "21", "1e5",
            "0x10", "1,5", "1kk", "", "1e", "--1", "$((2)*(3))", "$(exp(1000))", "$((1)/(0))"]
FACTORS = [1e-12, 1e-6, 1e-3, 0.1, 0.5, -1, 2, 10, 1e3, 1e6, 1e12]
# Stops that no reading of the deck can foresee.
OF_NUMBERS = ["not converge", "Singular matrix", "NaN", "zero pivot", "Pivot is too small", "norm too large", "iter_trbdf2",
              "no pivot", "delt_min", "not enough memory", "residual", "overflow", "sweep end not reached",
              "itmax", "no valid pivot", "gmin", "smallest auto step", "wrt_debug_smat asks"]


# ---- decks to begin with

def base_decks():
    """[(name, text, folder of data files or None)], long runs made short."""
    decks = []
    for path in sorted(SOURCE.glob("examples/*.in")) + sorted(SOURCE.glob("examples/*/deck.in")) + sorted(
            SOURCE.glob("tests/decks/*/deck.in")):
        text = path.read_text(encoding="latin-1")
        if len(text) > 20000:
            continue
        decks.append((str(path.relative_to(SOURCE)), shortened(text), path.parent if path.name == "deck.in" else None))
    return decks


SCALE = {"G": 1e9, "M": 1e6, "k": 1e3, "K": 1e3, "m": 1e-3, "u": 1e-6, "n": 1e-9, "p": 1e-12, "f": 1e-15}


def value(word):
    if not NUMBER.match(word):
        return None
    return float(word[:-1]) * SCALE[word[-1]] if word[-1] in SCALE else float(word)


def shortened(text, most_steps=3000):
    def shorten(match):
        line = match.group(0)
        words = dict(re.findall(r"(t_end|delt_const)\s*=?\s*(\S+)", line))
        end, step = value(words.get("t_end", "")), value(words.get("delt_const", ""))
        if end is None or step is None or step <= 0 or end / step <= most_steps:
            return line
        return re.sub(r"(t_end\s*=?\s*)\S+", lambda m: m.group(1) + "%g" % (most_steps * step), line)

    return re.sub(r"^method:.*(\n\+.*)*", shorten, text, flags=re.M)


def method_words():
    text = (SOURCE / "src/settings/method_words.cpp").read_text()
    return sorted(set(re.findall(r'^\s*\{"(\w+)",', text, flags=re.M)))


# ---- changes

def words_of(line):
    return re.split(r"(\s+|=)", line)


def places(lines, wanted):
    """(line, piece) of all words for which wanted(word) holds."""
    return [(i, j) for i, line in enumerate(lines) for j, w in enumerate(words_of(line)) if w.strip(" \t=") and wanted(w)]


def put(lines, place, word):
    pieces = words_of(lines[place[0]])
    pieces[place[1]] = word
    lines[place[0]] = "".join(pieces)


def other_number(rng, word):
    if rng.random() < 0.5:
        return rng.choice(EXTREMES)
    x = value(word)
    return "%g" % ((x if x is not None else 1.0) * rng.choice(FACTORS))


def change_number(rng, lines, _):
    found = places(lines, lambda w: NUMBER.match(w))
    if found:
        at = rng.choice(found)
        put(lines, at, other_number(rng, words_of(lines[at[0]])[at[1]]))


def change_name(rng, lines, _):
    found = places(lines, lambda w: not NUMBER.match(w))
    if not found:
        return
    at = rng.choice(found)
    word = words_of(lines[at[0]])[at[1]]
    other = words_of(lines[rng.choice(found)[0]])
    how = rng.randrange(9)
    put(lines, at, [word[:-1], word + "x", word.upper(), word[1:] + word[:1], rng.choice(other).strip(), word + "_of_" + word,
                    "\xe4\xff\x01"[rng.randrange(3)] + word, word * (40000 // max(1, len(word))) if rng.random() < 0.05
                    else word * 3, "0"][how])


def delete_word(rng, lines, _):
    found = places(lines, lambda w: True)
    if found:
        put(lines, rng.choice(found), "")


def duplicate_word(rng, lines, _):
    found = places(lines, lambda w: True)
    if found:
        at = rng.choice(found)
        word = words_of(lines[at[0]])[at[1]]
        put(lines, at, word + rng.choice([" ", "="]) + word)


def swap_words(rng, lines, _):
    found = places(lines, lambda w: True)
    if len(found) < 2:
        return
    a, b = rng.choice(found), rng.choice(found)
    if rng.random() < 0.6:
        b = rng.choice([p for p in found if p[0] == a[0]])
    wa, wb = words_of(lines[a[0]])[a[1]], words_of(lines[b[0]])[b[1]]
    put(lines, a, wb)
    put(lines, b, wa)


def delete_line(rng, lines, _):
    if lines:
        del lines[rng.randrange(len(lines))]


def duplicate_line(rng, lines, _):
    if lines:
        i = rng.randrange(len(lines))
        lines.insert(rng.choice([i, rng.randrange(len(lines) + 1)]), lines[i])


def swap_lines(rng, lines, _):
    if len(lines) > 1:
        i, j = rng.randrange(len(lines)), rng.randrange(len(lines))
        lines[i], lines[j] = lines[j], lines[i]


def splice(rng, lines, bases):
    other = rng.choice(bases)[1].split("\n")
    begin = rng.randrange(len(other))
    piece = other[begin:begin + rng.choice([1, 1, 2, 5, 20])]
    at = rng.randrange(len(lines) + 1)
    lines[at:at + rng.choice([0, 0, len(piece)])] = piece


def join_lines(rng, lines, _):
    if len(lines) > 1:
        i = rng.randrange(len(lines) - 1)
        lines[i:i + 2] = [lines[i] + rng.choice([" ", "=", "\n+ ", " # "]) + lines[i + 1]]


def add_bytes(rng, lines, _):
    if lines:
        i = rng.randrange(len(lines))
        k = rng.randrange(len(lines[i]) + 1)
        text = rng.choice(["\t", "=", "#", "+", "$", "(", "\x00", "\r", "\xff", "  ", "'", "../", "/tmp/", "%s", "=" * 50])
        lines[i] = lines[i][:k] + text + lines[i][k:]


GENTLE = [change_number] * 6 + [swap_words, duplicate_line, delete_line]  # after which most decks still run
CHANGES = [change_number] * 5 + [change_name] * 3 + [delete_word, duplicate_word, swap_words, swap_words, delete_line,
                                                      duplicate_line, swap_lines, splice, splice, join_lines, add_bytes]


def some_deck(rng, bases):
    """Runs in time as often as the many small decks of the tests."""
    if rng.random() < 0.5:
        bases = [b for b in bases if b[0].startswith("examples")]
    return rng.choice(bases)


def changed_deck(rng, bases):
    name, text, folder = some_deck(rng, bases)
    lines = text.split("\n")
    changes = GENTLE if rng.random() < 0.5 else CHANGES
    for _ in range(rng.choice([1, 1, 1, 2, 2, 3, 5])):
        rng.choice(changes)(rng, lines, bases)
    return name, "\n".join(lines), folder


def changed_rules(rng, bases, methods):
    name, text, folder = some_deck(rng, [b for b in bases if "begin_solve" in b[1]])
    lines = text.split("\n")
    for _ in range(rng.choice([1, 2, 3, 4])):
        begins = [i for i, l in enumerate(lines) if l.startswith("begin_solve")]
        if not begins:
            break
        at = rng.choice(begins)
        end = next((i for i in range(at, len(lines)) if lines[i].startswith("end_solve")), len(lines))
        rules = [i for i in range(at, end) if lines[i].startswith("method:")]
        how = rng.random()
        if how < 0.15:
            types = [i for i in range(at, end) if lines[i].startswith("solve_type")]
            for i in types[:1]:
                lines[i] = "solve_type " + rng.choice(["dc", "trns", "startup", "ssw", "ac"])
        elif how < 0.35 and rules:
            block = lines[at:end]
            change_number(rng, block, bases)
            lines[at:end] = block
        else:
            word = rng.choice(methods)
            held = re.search(r"\b%s\s*=?\s*(\S+)" % word, "\n".join(lines[at:end]))
            known = held.group(1) if held else rng.choice(["yes", "no", "1", "10", "1e-6", "1u", "100"])
            new = rng.choice(["yes", "no", "yes", "1", "2", "5", "100", "1e-3", "1e-9", other_number(rng, known)])
            if rules and rng.random() < 0.8:
                lines[rules[-1]] += " %s=%s" % (word, new)
            else:
                lines.insert(at + 1, "method: %s=%s" % (word, new))
    return name, "\n".join(lines), folder


# ---- runs

class Outcome:
    def __init__(self, status, text, seconds, peak):
        self.status, self.text, self.seconds, self.peak = status, text, seconds, peak


def run(command, folder, seconds, memory):
    """Runs in a session of its own; ends all of it when the time is over (status None)."""
    def limit():
        resource.setrlimit(resource.RLIMIT_AS, (2 * memory, 2 * memory))  # above what is judged
        resource.setrlimit(resource.RLIMIT_CORE, (0, 0))
        resource.setrlimit(resource.RLIMIT_FSIZE, (300 << 20, 300 << 20))

    with open(folder / "said.txt", "wb") as said:
        child = subprocess.Popen(command, cwd=folder, stdin=subprocess.DEVNULL, stdout=said, stderr=subprocess.STDOUT,
                                 preexec_fn=limit, start_new_session=True)
    begin, late = time.monotonic(), threading.Event()

    def end():
        late.set()
        try:
            os.killpg(child.pid, signal.SIGKILL)
        except ProcessLookupError:
            pass

    timer = threading.Timer(seconds, end)
    timer.start()
    _, status, used = os.wait4(child.pid, 0)
    child.returncode = status  # it has been waited for
    timer.cancel()
    try:
        os.killpg(child.pid, signal.SIGKILL)  # whatever it may have left behind
    except ProcessLookupError:
        pass
    with open(folder / "said.txt", "rb") as said:
        said.seek(max(0, os.path.getsize(folder / "said.txt") - 20000))
        text = said.read().decode("latin-1")
    code = None if late.is_set() else -os.WTERMSIG(status) if os.WIFSIGNALED(status) else os.WEXITSTATUS(status)
    return Outcome(code, text, time.monotonic() - begin, used.ru_maxrss << 10)


def message_of(text):
    """The line that says what happened, with names and numbers left out."""
    lines = [l[:300] for l in text.split("\n") if l.strip() and not re.match(r"deck.in.run/|rows up to|mat::", l)]
    chosen = ""
    for i, l in enumerate(lines):
        if re.search(r"Halting|error: |terminate called|not enough memory|^tnl: ", l):
            before = [x for x in lines[max(0, i - 3):i + 1] if not x.startswith(("iter_", "i=", "mat::", "Transient"))]
            chosen = " | ".join(x.strip() for x in before)
            break
    told = [l for l in lines if not re.match(r"  (meaning|advice|deck.in|one of|    )", l)]
    if not chosen and lines:
        chosen = (told or lines)[-1].strip()
    chosen = re.sub(r"\S+\.in:\d+:\d+:?", "", chosen)
    chosen = re.sub(r"[-+]?\d[\d.]*([eE][-+]?\d+)?", "#", chosen)
    return chosen[:220]


def judge(check, ran, memory):
    """[(kind, message)]"""
    found = []
    for name, outcome, good in (("check", check, (0, 3, 5)), ("run", ran, (0, 1, 3, 5, 6))):
        said = name + ": " + message_of(outcome.text)
        if outcome.status is None:
            found.append(("endless", said))
        elif outcome.status < 0 or outcome.status > 128 or "terminate called" in outcome.text:
            found.append(("crash", "status %s %s" % (outcome.status, said)))
        elif outcome.status not in good:
            found.append(("status", "status %s %s" % (outcome.status, said)))
        if "not enough memory" in outcome.text:
            found.append(("refused", said))
        if outcome.peak > memory:
            found.append(("memory", said))
    if check.status == 0 and ran.status in (1, 3):
        numbers = any(word in ran.text for word in OF_NUMBERS)
        found.append(("diverged" if numbers else "unsaid", message_of(ran.text)))
    if check.status == 3 and ran.status == 0:
        found.append(("alarm", message_of(check.text)))
    return found


FAULTS = ("endless", "crash", "status", "memory")


class Trials:
    def __init__(self, options):
        self.options = options
        self.tnl = str(pathlib.Path(options.tnl).resolve())
        self.bases = base_decks()
        self.methods = method_words()
        self.memory = options.memory << 20

    def deck(self, number):
        kind = "deck" if number < self.options.decks else "rule"
        index = number if kind == "deck" else number - self.options.decks
        rng = random.Random("%s %s %d" % (self.options.seed, kind, index))
        if kind == "deck":
            made = changed_deck(rng, self.bases)
        else:
            made = changed_rules(rng, self.bases, self.methods)
        return ("%s%d" % (kind, index),) + made

    def trial(self, number):
        label, name, text, data = self.deck(number)
        with tempfile.TemporaryDirectory(prefix="tnl_trial_") as place:
            folder = pathlib.Path(place)
            if data is not None:
                for entry in data.iterdir():
                    if entry.is_file() and entry.name != "deck.in" and entry.stat().st_size < 1 << 20:
                        shutil.copy(entry, folder / entry.name)
            (folder / "deck.in").write_text(text, encoding="latin-1")
            limit = self.options.time_limit
            check = run([self.tnl, "check", "deck.in"], folder, 30 * self.options.patience, self.memory)
            ran = run([self.tnl, "run", "-q", "--time-limit", str(limit), "deck.in"], folder,
                      (limit + 20) * self.options.patience, self.memory)
        return label, name, text, check, ran, judge(check, ran, self.memory)


def main():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("tnl")
    parser.add_argument("--decks", type=int, default=1000, help="decks with any changes")
    parser.add_argument("--rules", type=int, default=200, help="decks with changed rules and values")
    parser.add_argument("--seed", default="1")
    parser.add_argument("--jobs", type=int, default=2)
    parser.add_argument("--time-limit", type=float, default=1.5, help="s of a run")
    parser.add_argument("--patience", type=float, default=1, help="factor of the time that a command may take, beyond")
    parser.add_argument("--memory", type=int, default=1024, help="MB of each process")
    parser.add_argument("--out", default="", help="folder for decks with findings")
    parser.add_argument("--from", dest="first", type=int, default=0, help="begins with this number of a deck")
    parser.add_argument("--only", type=int, nargs="*", help="numbers of single decks, shown with all that is said")
    options = parser.parse_args()
    trials = Trials(options)

    if options.only:
        for number in options.only:
            label, name, text, check, ran, found = trials.trial(number)
            print("==== %d, %s of %s\n%s" % (number, label, name, text))
            for what, outcome in (("check", check), ("run", ran)):
                print("---- %s: status %s, %.2f s, %d MB\n%s" % (what, outcome.status, outcome.seconds, outcome.peak >> 20,
                                                                outcome.text))
            print("---- " + str(found))
        return 0

    out = pathlib.Path(options.out) if options.out else None
    if out:
        out.mkdir(parents=True, exist_ok=True)
    statuses, kinds, slowest, largest = {}, {}, (0, 0), (0, 0)
    total, begin = options.decks + options.rules, time.monotonic()
    with concurrent.futures.ThreadPoolExecutor(options.jobs) as pool:
        for number, done in enumerate(pool.map(trials.trial, range(options.first, total)),
                                      options.first):
            label, name, text, check, ran, found = done
            statuses[(check.status, ran.status)] = statuses.get((check.status, ran.status), 0) + 1
            slowest = max(slowest, (max(check.seconds, ran.seconds), number))
            largest = max(largest, (max(check.peak, ran.peak), number))
            for kind, message in found:
                numbers = kinds.setdefault((kind, message), [])
                numbers.append(number)
                if out and len(numbers) <= 3:
                    stem = out / ("%s-%05d" % (kind, number))
                    stem.with_suffix(".in").write_text(text, encoding="latin-1")
                    stem.with_suffix(".txt").write_text("%s of %s\n%s\n---- check %s\n%s\n---- run %s\n%s" % (
                        label, name, message, check.status, check.text, ran.status, ran.text), encoding="latin-1")
                if kind in FAULTS:
                    print("%s: %d (%s of %s): %s" % (kind.upper(), number, label, name, message), flush=True)
            if (number + 1) % 200 == 0:
                print("%d of %d decks, %.0f s" % (number + 1, total, time.monotonic() - begin), file=sys.stderr, flush=True)

    print("\n%d decks, seed %s, %.0f s; the slowest command took %.1f s (deck %d), the largest %d MB (deck %d)" % (
        total - options.first, options.seed, time.monotonic() - begin, slowest[0], slowest[1], largest[0] >> 20, largest[1]))
    print("\ncheck  run  decks")
    for (check, ran), n in sorted(statuses.items(), key=lambda item: -item[1]):
        print("%5s %4s %6d" % (check, ran, n))
    for kind in FAULTS + ("unsaid", "alarm", "refused", "diverged"):
        of_kind = sorted(((len(v), k[1], v) for k, v in kinds.items() if k[0] == kind), reverse=True)
        print("\n%s: %d decks, %d messages" % (kind, sum(n for n, _, _ in of_kind), len(of_kind)))
        for n, message, numbers in of_kind:
            print("  %4d  %s  [%s]" % (n, message, " ".join(map(str, numbers[:3]))))
    return 1 if any(k[0] in FAULTS for k in kinds) else 0


if __name__ == "__main__":
    sys.exit(main())
