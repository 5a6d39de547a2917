#!/usr/bin/perl
# SPDX-License-Identifier: Apache-2.0
# What script(1) recorded of a terminal, as an SVG in which each line appears when it did. Knows lines, carriage returns,
# erasing to the end of the line, and colours: what our programs print.
#   session_svg.pl OUTPUT TIMING
use strict;
use warnings;
use utf8;
binmode STDOUT, ':utf8';

my ($rows, $cell, $row_height, $margin) = (28, 7.4, 17, 12);
my $longest_wait_s = 1.5;
my %colour = (30 => '#484f58', 31 => '#ff7b72', 32 => '#3fb950', 33 => '#d29922', 34 => '#58a6ff', 35 => '#bc8cff',
    36 => '#39c5cf', 37 => '#b1bac4', 90 => '#6e7681', 91 => '#ffa198', 92 => '#56d364', 93 => '#e3b341', 94 => '#79c0ff',
    95 => '#d2a8ff', 96 => '#56d4dd', 97 => '#ffffff');

my ($output_file, $times_file) = @ARGV;
open my $in, '<:raw', $output_file or die "$output_file: $!";
my $output = do { local $/; <$in> };
$output =~ s/^Script started[^\n]*\n//;
$output =~ s/\nScript done[^\n]*\n$//;
open my $times, '<', $times_file or die "$times_file: $!";

my @lines = ({ cells => [], at => 0 });
my ($column, $style, $now, $pending) = (0, '', 0, '');

sub put {
    my ($character) = @_;
    my $line = $lines[-1];
    push @{ $line->{cells} }, [ ' ', '' ] while @{ $line->{cells} } < $column;
    $line->{at} = $now if !@{ $line->{cells} } || $column == 0;
    $line->{cells}[ $column++ ] = [ $character, $style ];
}

sub set_style {
    for my $code (split /;/, $_[0] eq '' ? '0' : $_[0]) {
        if ($code == 0) { $style = '' }
        elsif ($code == 1) { $style .= ' font-weight="bold"' unless $style =~ /bold/ }
        elsif ($code == 2) { $style .= ' fill-opacity="0.6"' }
        elsif ($colour{$code}) { $style =~ s/ fill="[^"]*"//; $style .= " fill=\"$colour{$code}\"" }
        elsif ($code == 39) { $style =~ s/ fill="[^"]*"// }
    }
}

sub feed {
    my ($text) = @_;
    while ($text =~ /\G(?:\e\[([0-9;?]*)([A-Za-z])|(\r)|(\n)|\e.|([^\e\r\n]))/gs) {
        if (defined $2) {
            if ($2 eq 'm') { set_style($1) }
            elsif ($2 eq 'K') { splice @{ $lines[-1]{cells} }, $column }
        }
        elsif (defined $3) { $column = 0 }
        elsif (defined $4) { push @lines, { cells => [], at => $now }; $column = 0 }
        elsif (defined $5 && ord $5 >= 32) { put($5) }
    }
}

while (<$times>) {
    my ($wait, $bytes) = split;
    $now += $wait < $longest_wait_s ? $wait : $longest_wait_s;
    my $chunk = $pending . substr $output, 0, $bytes, '';
    # Not in the middle of a character or of a sequence.
    $pending = $chunk =~ s/((?:\e(?:\[[0-9;?]*)?|[\xc0-\xff][\x80-\xbf]{0,2}))$// ? $1 : '';
    if (length $pending and $pending =~ /^[\xc0-\xdf][\x80-\xbf]$|^[\xe0-\xef][\x80-\xbf]{2}$/) { $chunk .= $pending; $pending = '' }
    utf8::decode($chunk);
    feed($chunk);
}
pop @lines while @lines && !@{ $lines[-1]{cells} };

my $widest = 0;
for my $line (@lines) { $widest = @{ $line->{cells} } if @{ $line->{cells} } > $widest }
my $end = $now + 4;
my ($width, $height) = ($widest * $cell + 2 * $margin, $rows * $row_height + 2 * $margin);

sub percent { sprintf '%.2f', 100 * $_[0] / $end }
sub escaped { my $text = shift; $text =~ s/&/&amp;/g; $text =~ s/</&lt;/g; $text =~ s/>/&gt;/g; return $text }

my ($frames, $scroll, $text, $top) = ('', '0%{transform:translateY(0)}', '', 0);
for my $i (0 .. $#lines) {
    my $line = $lines[$i];
    my $at = percent($line->{at});
    my $y = $margin + ($i + 0.75) * $row_height;
    my $shown = '';
    my @cells = @{ $line->{cells} };
    for (my $from = 0; $from < @cells;) {
        my $to = $from;
        $to++ while $to < @cells && $cells[$to][1] eq $cells[$from][1];
        my $run = join '', map { $_->[0] } @cells[ $from .. $to - 1 ];
        if ($run =~ /\S/) {
            my ($blanks) = $run =~ /^(\s*)/;
            my $word = substr $run, length $blanks;
            $word =~ s/\s+$//;
            $shown .= sprintf '<text x="%.1f" y="%.1f" textLength="%.1f"%s>%s</text>', $margin + ($from + length $blanks) * $cell, $y,
                length($word) * $cell, $cells[$from][1], escaped($word);
        }
        $from = $to;
    }
    $text .= "<g class=\"l\" style=\"animation-name:l$i\">$shown</g>\n" if $shown ne '';
    $frames .= sprintf "\@keyframes l%d{0%%{opacity:0}%s%%,100%%{opacity:1}}\n", $i, $at;
    if ($i >= $rows) {
        $top = $i - $rows + 1;
        $scroll .= sprintf '%s%%{transform:translateY(%dpx)}', $at, -$top * $row_height;
    }
}
$scroll .= sprintf '100%%{transform:translateY(%dpx)}', -$top * $row_height;

printf <<'END', $width, $height, $end, $end, $frames, $scroll, $width, $height, $margin, $width, $rows * $row_height, $text;
<svg xmlns="http://www.w3.org/2000/svg" viewBox="0 0 %.0f %.0f" role="img">
<title>A session in the lab, recorded by scripts/record</title>
<style>
text{font:12.3px "DejaVu Sans Mono",Menlo,Consolas,monospace;white-space:pre}
.l{animation:%.2fs step-end infinite}
.s{animation:scroll %.2fs step-end infinite}
%s@keyframes scroll{%s}
@media (prefers-reduced-motion:reduce){.l,.s{animation:none}}
</style>
<rect width="%.0f" height="%.0f" rx="8" fill="#0d1117"/>
<clipPath id="screen"><rect y="%d" width="%.0f" height="%d"/></clipPath>
<g clip-path="url(#screen)"><g class="s" fill="#c9d1d9">
%s</g></g>
</svg>
END
