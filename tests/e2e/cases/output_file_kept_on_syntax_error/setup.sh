printf "the output of an earlier run\n" > obligations.cvc
