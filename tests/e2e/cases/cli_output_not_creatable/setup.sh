# a directory in the way of the output file
mkdir a_stdout0
