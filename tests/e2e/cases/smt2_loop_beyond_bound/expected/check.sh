# No path leaves the loop within two rounds: nothing is said of the state
# after the code.
if grep -q '(= Pr' a_stdout0; then echo "the post-state is asserted"; exit 1; fi
