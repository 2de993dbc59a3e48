all:
	echo
