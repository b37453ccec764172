#!/usr/bin/perl
# Calls the library that knows what is playing: run.pl LIBRARY WORD, where the word is "loop" or that
# of a command. The system answers such questions only to programs of its own, as perl is one.
use strict;
use warnings;
use DynaLoader ();

die "usage: run.pl LIBRARY WORD\n" unless @ARGV == 2 && $ARGV[1] =~ /\A[a-z_]+\z/;
my ($path, $word) = @ARGV;

my $library = DynaLoader::dl_load_file($path, 0)
    or die 'run.pl: ' . DynaLoader::dl_error() . "\n";
my $entry = DynaLoader::dl_find_symbol($library, "halvo_media_$word")
    or die "run.pl: no such word: $word\n";
# Ends the process by itself.
DynaLoader::dl_install_xsub('Halvo::call', $entry)->();
