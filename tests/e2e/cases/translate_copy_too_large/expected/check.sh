# The run stops inside the translation: no section is printed.
if grep -q 'PARSING DONE' a_stdout0; then
    echo "the listing was translated to its end"
    exit 1
fi
