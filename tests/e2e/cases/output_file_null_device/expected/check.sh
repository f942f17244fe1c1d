[ -c /dev/null ] || { echo "/dev/null is no longer a device"; exit 1; }
