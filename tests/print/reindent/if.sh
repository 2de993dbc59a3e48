if a; then
  b
elif c
then
  d
else
  e
fi
while f
do
  g
done
