# SPDX-License-Identifier: MIT

# Searches and Perl on the same patterns and subjects, where both mean the same:
#
#   perl perl_second_opinion.pl PROGRAM...
#
# PROGRAM is search_answers. Patterns are made at random, the same ones each time; where the two are
# meant to differ is said below, and checked as well: such a difference must be there.

use strict;
use warnings;
use File::Temp;
no warnings 'regexp';

# Why, which of the random patterns are left out for it, and an example.
my @differences = (
    ['a prefix literal is looked for, even if none of it is needed',
        qr/^(?:\(\?:)?[ab]\)?(?:[*?]|\{0,\d\})\?/, 'a*?b', 'bab'],
    ['repetitions of one type are merged, and are greedy then',
        qr/(\.|\\[dwWs])(?:[*+?]\??|\{[\d,]+\}\??)?\1/, '\w\w+?', 'abc'],
    ['a group that is open has captured nothing, rather than taking no part yet',
        undef, '(\1a)', 'a'],
    ['a back-reference needs a byte', undef, '(a*)b\1', 'b'],
    ['captures of a look-around stay when what follows it fails', undef, '(?=(a))x|a', 'a'],
    ['captures of an atomic group stay when it is given back', undef, '(?>(a)b)?abc', 'abc'],
    ['nothing is seen after the last literal, if the pattern ends with one',
        qr/(?:\(\?[=!]|\$|\\[zZ]).*[ab](?:\+\??|\{[12].*)?$/, '(?=a\n)a', "a\n"],
    ['a repetition of nothing is the last one, even if more are due',
        qr/\)\{/, '(?:(?(1)a|())){2}', 'a'],
    ['a vertical tab is no white space', undef, '\s', "\x0B"],
    ['Perl looks for what a look-ahead at the start may begin with, even if it may be empty',
        qr/^\(\?=/, '(?=\W??)\d(?:(?!x)){2}', '1'],
    ['a group without a part in a further repetition keeps what it captured',
        qr/\(\?\(\d.*\)[*+?{]/, '((b)?){2}', 'b'],
    ['captures of an alternative that failed are undone in further repetitions too',
        undef, '(?:(b|)[bc]|[1b]??)+', 'bbbc1'],
);

# For the last two: of such patterns the whole match alone is compared.
my $has_inner_captures = qr/\(.*\(.*\).*\)[*+?{]/;

my @quantifiers = ('*', '+', '?', '*?', '+?', '??', '{2}', '{1,2}', '{2,}', '{1,3}?');
my @atoms       = ('a', 'b', 'ab', 'ba', '.', '\w', '\d', '\W', '\s', '[ab]', '[^a]', '[a-c]');
my @assertions  = ('^', '$', '\A', '\z', '\Z', '\b', '\B', '(?<=a)', '(?<!ab)', '(?=a)', '(?!b)');
my @letters     = ('a', 'a', 'b', 'b', 'c', 'A', '1', ' ', "\n");

# Random numbers of our own: Perl's are not the same everywhere.
my $state = 20260;
sub below { $state = ($state * 1103515245 + 12345) % 2**31; return ($state >> 12) % $_[0] }
sub pick  { return $_[below(scalar @_)] }

my $groups;

sub item {
    my ($depth, $captures) = @_;
    my $kind = below($depth ? 100 : 50);
    my $quantifier = below(2) ? pick(@quantifiers) : '';
    return pick(@atoms) . $quantifier if $kind < 42;
    return pick(@assertions) if $kind < 50;
    if ($kind < 72 && $captures) {
        ++$groups;
        return '(' . alternatives($depth - 1, 1) . ')' . $quantifier;
    }
    return '(?:' . alternatives($depth - 1, $captures) . ')' . $quantifier if $kind < 80;
    return pick('(?=', '(?!') . alternatives($depth - 1, 0) . ')' if $kind < 85;
    return '(?>' . alternatives($depth - 1, 0) . ')' . $quantifier if $kind < 92 || !$captures;
    ++$groups;
    my $group = $groups;
    return '([ab])' . sequence($depth - 1, 1) . "\\$group" . $quantifier if $kind < 96;
    return "(a)?(?($group)" . sequence($depth - 1, 1) . '|' . sequence($depth - 1, 1) . ')';
}

sub sequence { my @how = @_; return join '', map { item(@how) } 0 .. below(3) }

sub alternatives {
    my @how = @_;
    my @all = map { below(8) ? sequence(@how) : '' } 1 .. pick(1, 1, 1, 2, 3);
    return join '|', @all;
}

sub perl_answer {
    my ($options, $pattern, $subject) = @_;
    $subject =~ /(?$options:$pattern)/ or return 'none';
    return join ' ', map { defined $-[$_] ? "$-[$_]+" . ($+[$_] - $-[$_]) : '-' } 0 .. $#-, ($#- + 1) .. $#+;
}

my (@cases, @show);
sub add {
    my ($options, $pattern, $subject) = @_;
    push @cases, [$options, $pattern, $subject, perl_answer($options, $pattern, $subject)];
}
add('', $_->[2], $_->[3]) for @differences;
while (@cases < 40000) {
    $groups = 0;
    my $pattern = alternatives(3, 1);
    next if $groups > 9 || grep { defined $_->[1] && $pattern =~ $_->[1] } @differences;
    my $options = pick('', '', 's', 'm', 'i');
    add($options, $pattern, join '', map { pick(@letters) } 1 .. below(9)) for 1 .. 4;
}

my $input = File::Temp->new;
binmode $input;
printf $input "%s\t%s\t%s\n", $_->[0], unpack('H*', $_->[1]), unpack('H*', $_->[2]) for @cases;
close $input;
my @answers = `@ARGV < $input`;
s/\s+$// for @answers;
die 'answers to ' . @answers . ' of ' . @cases . " searches\n" if @answers != @cases;

my $faults = 0;
for my $i (0 .. $#cases) {
    my ($options, $pattern, $subject, $expected) = @{$cases[$i]};
    if ($i >= @differences && $pattern =~ $has_inner_captures) {
        s/ .*// for $answers[$i], $expected;
    }
    next if ($answers[$i] eq $expected) == ($i >= @differences);
    $subject =~ s/\n/\\n/g;
    print "/$pattern/$options on '$subject': $answers[$i], Perl $expected\n" if ++$faults <= 20;
}
print @cases . " searches, $faults faults\n";
exit($faults > 0);
