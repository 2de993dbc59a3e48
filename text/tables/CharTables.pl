#!/usr/bin/env perl
# Writes CharTables.cpp, the character classes of text/CharTables.h, from the Unicode Character Database that comes
# with perl:   perl text/tables/CharTables.pl > text/tables/CharTables.cpp
use strict;
use warnings;
use Unicode::UCD qw(prop_invlist prop_invmap);

my $version = Unicode::UCD::UnicodeVersion();

sub ranges {    # [first, last] of every run of code points from U+0080 on for which the test holds
  my ($test) = @_;
  my (@out, $start);
  for my $c (0x80 .. 0x110000) {
    my $in = $c < 0x110000 && !($c >= 0xD800 && $c <= 0xDFFF) && $test->(chr $c, $c);
    if ($in && !defined $start) { $start = $c }
    elsif (!$in && defined $start) { push @out, [$start, $c - 1]; undef $start }
  }
  return @out;
}

sub put {
  my ($name, @rows) = @_;
  print "static constexpr CharRange ${name}Rows[] = {\n";
  my @cells = map { sprintf "{0x%X, 0x%X},", @$_ } @rows;
  while (my @line = splice @cells, 0, 6) { print "    @line\n" }
  print "};\nconstinit const std::span<const CharRange> $name(${name}Rows);\n\n";
}

sub mapping {   # simple case mappings as runs {first, last, stride, delta}
  my ($name, $property) = @_;
  my ($list, $map, $format, $default) = prop_invmap($property);
  my @pairs;
  for my $i (0 .. $#$list) {
    next if ref $map->[$i] || $map->[$i] eq $default;
    my $end = $i < $#$list ? $list->[$i + 1] - 1 : 0x10FFFF;
    for my $c ($list->[$i] .. $end) {
      my $delta = $map->[$i] + ($c - $list->[$i]) - $c;
      # A letter beyond ASCII never maps into ASCII: text in two scripts is not taken for equal.
      push @pairs, [$c, $delta] if $c >= 0x80 && $c + $delta >= 0x80 && $delta;
    }
  }
  my @runs;
  for my $p (@pairs) {
    my $r = $runs[-1];
    if ($r && $r->[3] == $p->[1]) {
      my $step = $p->[0] - $r->[1];
      if ($step <= 2 && ($r->[0] == $r->[1] || $r->[2] == $step)) { @$r[1, 2] = ($p->[0], $step); next }
    }
    push @runs, [$p->[0], $p->[0], 1, $p->[1]];
  }
  print "static constexpr CaseRange ${name}Rows[] = {\n";
  my @cells = map { sprintf "{0x%X, 0x%X, %d, %d},", @$_ } @runs;
  while (my @line = splice @cells, 0, 4) { print "    @line\n" }
  print "};\nconstinit const std::span<const CaseRange> $name(${name}Rows);\n\n";
}

print <<"END";
// Made by text/tables/CharTables.pl from the Unicode Character Database $version; do not edit.
#include "text/CharTables.h"

namespace text {

END
put('wideChars', ranges(sub { $_[0] =~ /\p{East_Asian_Width=W}|\p{East_Asian_Width=F}/ }));
put('zeroWidthChars', ranges(sub {
  $_[1] != 0xAD && ($_[0] =~ /\p{Mn}|\p{Me}|\p{Cf}/ || ($_[1] >= 0x1160 && $_[1] <= 0x11FF) || ($_[1] >= 0xD7B0 && $_[1] <= 0xD7FF))
}));
put('wordChars', ranges(sub { $_[0] =~ /\p{L}|\p{N}|\p{M}/ }));
put('blankChars', ranges(sub { $_[0] =~ /\p{White_Space}/ }));
put('extendingChars', ranges(sub { $_[0] =~ /\p{Grapheme_Cluster_Break=Extend}|\p{Grapheme_Cluster_Break=SpacingMark}/ }));
put('pictographs', ranges(sub { $_[0] =~ /\p{Extended_Pictographic}/ }));
mapping('upperCase', 'Simple_Uppercase_Mapping');
mapping('lowerCase', 'Simple_Lowercase_Mapping');
print "}  // namespace text\n";
