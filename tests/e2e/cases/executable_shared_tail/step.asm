# The shape of a step function's code from -O1 on: the then part falls
# into the tail (16) that stores the result and returns; the else part is
# placed after the return and goes back to the tail.
	.text
	.globl step
	.type step, @function
step:
	lwz r9,0(r3)		# 0: the input
	cmpwi cr7,r9,0		# 4
	beq cr7,.Lelse		# 8: input = 0
	li r10,1		# 12: then
.Ltail:
	stw r10,4(r3)		# 16: the output
	blr			# 20
.Lelse:
	li r10,2		# 24: else
	b .Ltail		# 28
	.size step, .-step
