# The items of a report: perl extract.pl KIND FILE. Keeps them, prints their number.
use strict;
use warnings;

my ($kind, $path) = @ARGV;
my %heads = (ctrl => qr/^RAID Controller.*:/, ld => qr/^(?:RG|sRG|scRG)\d/, pd => qr/^PD\d/,
             smart => qr/^PD\d/, pssd => qr/^Bus/);
my $head = $heads{$kind};
my ($root, $section, $table, @items) = ('', '', 0);

sub trim {
    my ($text) = @_;
    $text =~ s/^[ \t]+//;
    $text =~ s/[ \t\r\n]+$//;
    return $text;
}

open(my $file, '<', $path) or die "$path: $!";
while (my $line = <$file>) {
    if ($table) {
        next if $line =~ /^---|^\s*$/;
        my ($id, $name, @cells) = (split(' ', substr($line, 0, 4)), trim(substr($line, 4, 40)),
                                   split(' ', substr($line, 45)));
        push @items, [$section, 'SMART Detail', '', 'TRUE'], ['SMART Detail', 'ID', $id, 'TRUE'],
            ['SMART Detail', 'Attribute', $name, 'TRUE'], ['SMART Detail', 'Current', $cells[0], 'TRUE'],
            ['SMART Detail', 'Worst', $cells[1], 'TRUE'], ['SMART Detail', 'Raw Data', $cells[2], 'TRUE'],
            ['SMART Detail', 'Threshold', $cells[3], 'TRUE'];
    } elsif ($line =~ $head) {
        $root = $section = trim($line);
        push @items, ['', $root, '', 'TRUE'];
    } elsif ($line =~ /^### /) {
        $section = trim($line);
        push @items, [$root, $section, '', 'TRUE'];
    } elsif ($kind eq 'smart' && $line =~ /^ID .*Attribute/) {
        $table = 1;
    } elsif ($line =~ /^>>(PD\d+)/) {
        push @items, [$section, 'PD List', '', 'TRUE'], ['PD List', 'PD No.', $1, 'TRUE'];
    } elsif ($line =~ /^>(LD\d+) \((.*),([^,]*),([^,]*)\)/) {
        push @items, [$section, 'LD List', '', 'TRUE'], ['LD List', 'LD No.', $1, 'TRUE'],
            ['LD List', 'State', trim($4), 'TRUE'], ['LD List', 'Capacity', trim($3), 'TRUE'],
            ['LD List', 'Name', trim($2), 'TRUE'];
    } elsif ((my $colon = index($line, ':')) > 0) {
        push @items, [$section, trim(substr($line, 0, $colon)), trim(substr($line, $colon + 1)), 'TRUE'];
    }
}
print scalar(@items), "\n";
