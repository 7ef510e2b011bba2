# sides of the second tee
emodel name=t type=tee
+ side=250
