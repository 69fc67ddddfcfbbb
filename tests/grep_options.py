# SPDX-License-Identifier: MIT
"""Every option of GNU grep, and what vekgrep makes of it.

SAME: runs that must give the same output and exit status from both programs, on the texts below,
each with its arguments as a shell would take them. OTHERWISE: options that are refused or missing,
with the reason. What differs on purpose apart from options is described in docs/limits.md.
"""

import shlex

# name: content; a name with "/" lies in a folder, None is a link of that name to the content.
TEXTS = {
    "a": b"one\ntwo\nThree four\n\ntwo two_two x2\nlast",
    "b": b"TWO\r\nfor two\n(two)\ntwofold\n",
    "c.txt": b"1\n2\n3 two\n4\n5\n6 two\n7 two\n8\n9\n10\n11\n12 two\n13\n",
    "empty": b"",
    "zeros": b"x two\0\ntwo y\n\0z\n\0",
    "bin": b"two\0\ntwo\n",
    "latin": b"one\n\xe9two\n",
    "patterns": b"wo\nThree\n",
    "none": b"",
    "globs": b"*.txt\nb\n",
    "t/x.c": b"two\n",
    "t/x.h": b"one\ntwo\n",
    "t/sub/y.c": b"two two\n",
    "t/sub/deep/z.txt": b"nothing\n",
    "u/k": b"two\n",
}
LINKS = {"t/link.c": "x.c", "t/up": "../u"}

SAME = """
-e two a b | --regexp=two a | --regexp two -e Three a b | -f patterns a b | --file=patterns -c a
-f none a | -f none -v a | -f patterns -e x2 -n a | -E two|Three a | -P t(?=w) a b
--extended-regexp two a | --perl-regexp \\btwo\\b a b | -F (two) b | --fixed-strings . a b
-F -e two -e x2 -o a b | -Fx two b a | -Fw two a b | -Fwo two a b | -Fiw -e TWO -e two_two a b
-i two b | --ignore-case t.o a b | -y two b | -i --no-ignore-case two b | -ie three a
-w two a b | --word-regexp -o two a b | -wv two a b | -w tw. a b | -w two|two_two -o a
-x two a b | --line-regexp -n .*two.* a b | -xv two a | -x -e last -e one a
-z two zeros | --null-data -c . zeros | -zo t.o zeros | -zx x.two zeros | -zv two zeros
-s two gone a | --no-messages two a gone | -sq two gone a | -q two a | --quiet nowhere a
--silent two a | -v two a b | --invert-match -n two a | -vc two a b | -vl two a b empty
-m 1 two a b c.txt | --max-count=2 -c two c.txt | -m 0 two a | -m 2 -v two c.txt | -m1 -A 2 two c.txt
-m 2 -B 1 -A 9 two c.txt | -m 3 -n '' a | -m1 -o two a c.txt | -m2 -vc 1 c.txt
-b two a b | --byte-offset -o two a b | -nb two a | -bv two a | -b -C1 two c.txt
-n two a | --line-number '' a b | -n -o . b | --line-buffered two a b | -nv . a
-H two a | --with-filename two a | -h two a b | --no-filename -n two a b | -hc two a b
--label=in -H two - | --label in -c two - a | -o two a b | --only-matching -n t a b
-o x* a | -ov two a | -oi T a b | --binary-files=text two a b | --binary-files=without-match two bin a
-I two bin a | -Ic two bin a | -a two bin | --text -c two bin zeros | two bin a | -c two bin | -l two bin
-o two bin | -d skip two t a | --directories=recurse -h nothing t | -r nothing t
--recursive -h nothing t | -R nothing t/sub | --dereference-recursive nothing t/sub/deep | -r two t/sub/deep a | -D skip two a | --devices=read two a
-r --include=*.txt nothing t | -r --include *.h two t | -r --exclude=*.h -h one t a
--exclude-from=globs two a b c.txt | --exclude=a two a b ./a | --include=?.txt two a c.txt
--exclude=[!a] two a b | --exclude=a --include=a two a | -r --exclude-dir=sub --include=*.txt . t
--exclude-dir=t -r nothing t | --exclude-dir=t/ -r nothing t u | -r --exclude-dir=deep nothing t
-L two a empty patterns | --files-without-match two a b | -L nothing a b | -l two a empty b
--files-with-matches -c two a b | -lv two a b | -c two a b empty | --count '' a b | -lL two a empty
-T two a | -T -n two a | --initial-tab -H two a | -Z -l two a b | --null -c two a b | -nZH two a
-L -Z two a empty | -B 1 two c.txt | --before-context=2 -n two c.txt | -A 1 two c.txt a
--after-context 2 two c.txt | -C 1 two c.txt | --context=2 -c two c.txt | -1 two c.txt | -12 two c.txt
-1n two c.txt a b | -C1 -o two c.txt | -nC1 -v two c.txt | -A1 -B0 -n two c.txt | -C 0 two c.txt
-nvC1 [0-9] a c.txt | --group-separator=** -A1 two c.txt | --no-group-separator -A1 two c.txt
-A1 --group-separator= two c.txt | -C1 -h two c.txt a | -5 -m1 two c.txt a | -A 1 -l two a
--color=always two a b | --colour=always -n two a | --color=always -H -n -b two a b
--color=always -i -e two -e t a b | --color=always -C1 -n two c.txt | --color=always -o two a b
--color=always -c two a b | --color=always -l two a b | --color=always -v two a | --color=never two a
--color two a | -U two b | --binary two a | two nowhere/a | two t | two -- a b
a -e two | -ne two -- a -x | --inv two a | --line-n two a | --no-f two a b | -hn two a b -v | -A1 -m1 -c two c.txt
two|Three a | t.o\\r b | ^$ a -n | '' empty | ^ -c a b empty | $ -c a b | -e '' -e x a -o | [[:upper:]]+ -o a b
-F two | -F two - | -F zwei a | -F -i two a b | -i -n -F two a b | -F -o -n -i two b - a | -F -c two a b empty
-F -v -n o a | -F -o -v one a | -F -c -o t a | -F -l -c -o one a empty b | -F -vl o a b | -F -- -x a
-F -e two -e th -e Three -i -o a | -F -etwo --regexp=one a --count | -F -e tw -e wo_ -e two_t -o a
-F '' a -c | -F '' empty -c | -F -v '' a | -F -o -e '' -e wo a | two -F --ignore-case -- a b
[wh] a b | -i -n ^t.*[a-z]$ a b | -v -n o$ a | -c ^ a b empty | -l -e e{2} -e [0-9] a b | -n ^$ a
-F -v one bin | -F nothing bin | -F --color=always -n two a b | -F --color=always -v two b
-F --color=always --color=never two a | -F -l three bin
(two)_\\1 a | -c ^|$ a | -i [t]WO b | \\bx a | -o -b \\w+ a | . latin | -n two - a | -c '' - | -v '' a
""".replace("\n", " | ")

# Lines are patterns, each.
NEWLINES = [["two\nThree", "a"], ["-F", "Thr\none", "a"], ["-F", "two\nThree\n", "-c", "a"], ["-e", "x2\nlast", "-o", "a"],
            ["-w", "two\nfour", "-n", "a"], ["-x", "\ntwo", "-n", "a"], ["-v", "o\nx2", "a"]]

def runs():
    """All of them, as lists of arguments."""
    return [shlex.split(run.replace("\\", r"\\")) for run in SAME.split(" | ") if run.strip()] + NEWLINES


# Options after which patterns aren't grep's basic ones.
KINDS = {"-E", "-P", "-F", "-Fx", "-Fw", "-Fwo", "-Fiw", "--fixed-strings", "--perl-regexp", "--extended-regexp"}

# Values of GREP_COLORS, and what is run with each.
COLORED = [["-n", "two", "a", "b"], ["-Hbn", "-C1", "two", "c.txt"], ["-vn", "-C1", "two", "c.txt"],
           ["-o", "two", "a"]]
COLORS = ["ne", "mt=01;32", "ms=1;33:fn=34:ln=33:bn=36:se=31", "sl=1:cx=2:ne", "rv:cx=2:sl=1:ne", "ne:xx=1"]

OTHERWISE = {
    "-G": ("refused", "basic patterns are another language"),
    "--basic-regexp": ("refused", "basic patterns are another language"),
    "-u": ("absent", "GNU grep itself warns that it does nothing"),
    "--unix-byte-offsets": ("absent", "GNU grep itself warns that it does nothing"),
    "-V": ("other", "prints a version of its own"),
    "--version": ("other", "prints a version of its own"),
    "--help": ("other", "prints a help of its own"),
}
