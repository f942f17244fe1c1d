mkdir out && touch out/kept
