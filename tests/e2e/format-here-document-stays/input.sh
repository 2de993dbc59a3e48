if true; then
	cat <<-E
		kept
	E
echo "one
 two"
fi
