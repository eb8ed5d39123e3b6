# SPDX-License-Identifier: Apache-2.0
"""What the cases use in the guest."""
