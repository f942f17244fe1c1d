# a directory where the listing should be
mkdir listing.s
